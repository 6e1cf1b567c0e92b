#pragma once

#include <cstddef>
#include <random>
#include <vector>

#include "platform/navigation/occupancy_map.h"

namespace QV::bench {

/** Poses in free cells, anywhere within them, the same each time; fewer if there is hardly any. */
inline std::vector<Math::Pose2D> drawFreePoses(const OccupancyMap& map, std::size_t count) {
  std::mt19937 random(1);
  std::uniform_int_distribution<int> column(0, map.getWidth() - 1);
  std::uniform_int_distribution<int> row(0, map.getHeight() - 1);
  std::uniform_real_distribution<float> turn(-3.1415927f, 3.1415927f);
  std::uniform_real_distribution<float> part(-0.5f, 0.5f);
  std::vector<Math::Pose2D> poses;
  constexpr int kMostTries = 10'000'000;
  for (int tries = 0; tries < kMostTries && poses.size() < count; ++tries) {
    const int c = column(random);
    const int r = row(random);
    if (map.getOccupancy(c, r) > 0.0f) continue;
    const Math::Position2D centre = map.getCellCentre(c, r);
    poses.emplace_back(centre.x + part(random) * map.getResolution(),
                       centre.y + part(random) * map.getResolution(), turn(random));
  }
  return poses;
}

}  // namespace QV::bench
