#include "platform/navigation/strip_walk.h"

#include <cmath>
#include <limits>
#include <random>

#include <gtest/gtest.h>

#include "platform/navigation/occupancy_map.h"
#include "platform/navigation/plain_walk.h"

namespace QV::detail {
namespace {

constexpr float kStripLimit = 0.4f;

/** Maps, and rays that seek out what is hard: edges, corners, axes, diagonals, starts outside. */
class RandomRays {
 public:
  explicit RandomRays(unsigned seed) : random(seed) {}

  OccupancyMap nextMap() {
    OccupancyMap map(integer(1, 90), integer(1, 90), 0.1f, {}, 0.0f);
    const double density = std::pow(uniform(0.0, 1.0), 4.0);
    for (int row = 0; row < map.getHeight(); ++row) {
      for (int column = 0; column < map.getWidth(); ++column) {
        if (uniform(0.0, 1.0) < density) map.setOccupancy(column, row, 1.0f);
      }
    }
    return map;
  }

  GridPoint nextStart(const OccupancyMap& map) {
    return {place(map.getWidth()), place(map.getHeight())};
  }

  double nextDirection() {
    const double eighth = std::atan(1.0);
    const double hair = integer(0, 1) ? 0.0 : std::pow(10.0, uniform(-16.0, -1.0));
    return integer(0, 2) ? uniform(-4.0, 4.0) : integer(-8, 8) * eighth + hair;
  }

  double nextReach() {
    return integer(0, 3) ? uniform(0.0, 120.0) : std::numeric_limits<double>::infinity();
  }

 private:
  double place(int side) {
    const int cell = integer(-4, side + 4);
    switch (integer(0, 9)) {
      case 0:
        return cell;
      case 1:
        return cell + std::pow(10.0, uniform(-16.0, -2.0));
      case 2:
        return cell - std::pow(10.0, uniform(-16.0, -2.0));
      case 3:
        return uniform(-1.0, 1.0) * std::pow(10.0, uniform(0.0, 30.0));
      default:
        return cell + uniform(0.0, 1.0);
    }
  }
  double uniform(double low, double high) {
    return std::uniform_real_distribution<double>(low, high)(random);
  }
  int integer(int low, int high) { return std::uniform_int_distribution<int>(low, high)(random); }

  std::mt19937 random;
};

TEST(StripWalk, answersAsThePlainWalkDoes) {
  RandomRays random(1);
  int answers = 0;
  for (int round = 0; round < 300; ++round) {
    const OccupancyMap map = random.nextMap();
    const ScanStore& store = *map.getScanStore(kStripLimit);
    for (int i = 0; i < 300; ++i) {
      const GridPoint start = random.nextStart(map);
      const double direction = random.nextDirection();
      const GridRay ray = aimRay(map.getWidth(), map.getHeight(), start, std::cos(direction),
                                 std::sin(direction), random.nextReach());
      const auto way = walkStrips(store, ray);
      if (!way) continue;
      ++answers;
      ASSERT_EQ(*way, walkPlainly(map, ray, kStripLimit))
          << "from " << start.x << ", " << start.y << " towards " << direction << " over "
          << map.getWidth() << " by " << map.getHeight();
    }
  }
  EXPECT_GT(answers, 80000);
}

}  // namespace
}  // namespace QV::detail
