#include "platform/navigation/fan_cast.h"

#include <array>
#include <cmath>
#include <limits>
#include <numbers>
#include <random>

#include <gtest/gtest.h>

#include "platform/navigation/occupancy_map.h"
#include "platform/navigation/plain_walk.h"

namespace QV::detail {
namespace {

constexpr float kFanLimit = 0.4f;
constexpr ScanPath kPaths[] = {ScanPath::best, ScanPath::scalar, ScanPath::sse4, ScanPath::avx2};

/** Maps, and rays in them that seek out what is hard: edges, corners, axes and diagonals. */
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
    const double eighth = 0.25 * std::numbers::pi;
    if (integer(0, 2) == 0) return uniform(-4.0, 4.0);
    // The last is about where a diagonal becomes too steep for the images.
    const double offsets[] = {0.0, hair(), uniform(-2e-7, 2e-7)};
    return integer(-8, 8) * eighth + offsets[integer(0, 2)];
  }

  double nextReach() {
    return integer(0, 3) == 0 ? std::numeric_limits<double>::infinity() : uniform(0.0, 120.0);
  }

 private:
  double place(int side) {
    const double cell = integer(0, side - 1);
    const double offsets[] = {0.0, hair(), 1.0 - hair(), uniform(0.0, 1.0), uniform(0.0, 1.0)};
    return cell + offsets[integer(0, 4)];
  }
  double hair() { return std::pow(10.0, uniform(-16.0, -1.0)); }
  double uniform(double low, double high) {
    return std::uniform_real_distribution<double>(low, high)(random);
  }
  int integer(int low, int high) { return std::uniform_int_distribution<int>(low, high)(random); }

  std::mt19937 random;
};

double castPlainly(const OccupancyMap& map, const FanCast& fan) {
  const GridRay ray =
      aimRay(fan.width, fan.height, fan.start, fan.cosHeading, fan.sinHeading, fan.reach);
  return walkPlainly(map, ray, kFanLimit);
}

/** One ray straight ahead. */
double castOn(ScanPath path, const FanCast& fan) {
  const std::array<double, 1 + FanCast::kMore> cosines{1.0};
  const std::array<double, 1 + FanCast::kMore> sines{0.0};
  std::array<double, 1 + FanCast::kMore> ways;
  findCastRays(path)(fan, cosines.data(), sines.data(), 1, ways.data());
  return ways[0];
}

TEST(FanCast, findsThePlainWalksAnswerOnEveryPath) {
  RandomRays random(1);
  int answers = 0;
  int doubtful = 0;
  constexpr int kMaps = 400;
  constexpr int kRays = 200;
  for (int i = 0; i < kMaps * kRays;) {
    const OccupancyMap map = random.nextMap();
    for (const int end = i + kRays; i < end; ++i) {
      const double heading = random.nextDirection();
      const FanCast fan{map.getScanStore(kFanLimit), map.getWidth(),    map.getHeight(),
                        random.nextStart(map),       std::cos(heading), std::sin(heading),
                        random.nextReach()};
      if (!fan.startsInside()) continue;
      const double expected = castPlainly(map, fan);
      for (const ScanPath path : kPaths) {
        if (!isSupported(path)) continue;
        const double way = castOn(path, fan);
        if (std::isnan(way)) {
          ++doubtful;
          continue;
        }
        ++answers;
        ASSERT_EQ(way, expected) << "path " << static_cast<int>(path) << ", from " << fan.start.x
                                 << ", " << fan.start.y << " towards " << heading << " over "
                                 << fan.width << " by " << fan.height;
      }
    }
  }
  // Along edges and on exact diagonals, of which these are full.
  EXPECT_LT(doubtful, answers / 3);
}

}  // namespace
}  // namespace QV::detail
