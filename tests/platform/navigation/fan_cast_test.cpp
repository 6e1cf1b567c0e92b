#include "platform/navigation/internal/fan_cast.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <numbers>
#include <random>

#include <gtest/gtest.h>

#include "platform/navigation/internal/map_inside.h"
#include "platform/navigation/internal/plain_walk.h"
#include "tests/support/vector_targets.h"

namespace QV::detail {
namespace {

constexpr float kFanLimit = 0.4f;

/** Zero, of either sign, for what only rounding keeps from it. */
double snapped(double part) {
  return std::abs(part) < 1e-15 ? std::copysign(0.0, part) : part;
}

/** The directions of a fan's rays, about its heading. */
struct Directions {
  using Values = std::array<double, FanCast::kMostRays + FanCast::kMore>;
  int count;
  Values cosines{};
  Values sines{};
};

/** Maps, and fans in them that seek out what is hard: edges, corners, axes and diagonals. */
class RandomFans {
 public:
  explicit RandomFans(unsigned seed) : random(seed) {}

  /** Every other one is big, and so empty that rays go far. */
  OccupancyMap nextMap() {
    const bool isBig = integer(0, 1) == 0;
    const int most = isBig ? 500 : 90;
    OccupancyMap map(integer(1, most), integer(1, most), 0.1f, {}, 0.0f);
    const double density = std::pow(uniform(0.0, isBig ? 0.3 : 1.0), 4.0);
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

  /** Makes a fan that turns by even steps, however small. */
  Directions nextDirections() {
    Directions directions{integer(1, FanCast::kMostRays)};
    const double steps[] = {hair(), uniform(-0.03, 0.03), uniform(-0.03, 0.03), uniform(-7.0, 7.0)};
    const double step = steps[integer(0, 3)];
    for (int i = 0; i < directions.count; ++i) {
      directions.cosines[i] = snapped(std::cos(i * step));
      directions.sines[i] = snapped(std::sin(i * step));
    }
    return directions;
  }

  double nextReach() {
    return integer(0, 3) == 0 ? std::numeric_limits<double>::infinity() : uniform(0.0, 400.0);
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

double castPlainly(const OccupancyMap& map, const FanCast& fan, double cosine, double sine) {
  const GridRay ray =
      aimRay(fan.width, fan.height, fan.start, cosine * fan.cosHeading - sine * fan.sinHeading,
             sine * fan.cosHeading + cosine * fan.sinHeading, fan.reach);
  return walkPlainly(map, ray, kFanLimit);
}

/** Casts with all vectors that there are, and without any; a ray in doubt says so. */
void expectPlainAnswers(const OccupancyMap& map, const FanCast& fan, const Directions& directions) {
  const auto& [count, cosines, sines] = directions;
  const auto check = [&](ScanPath path, const char* target) {
    Directions::Values ways;
    const bool mayDoubt =
        findScanSteps(path).castRays(fan, cosines.data(), sines.data(), count, ways.data());
    for (int i = 0; i < count; ++i) {
      if (std::isnan(ways[i]) && mayDoubt) continue;
      ASSERT_EQ(ways[i], castPlainly(map, fan, cosines[i], sines[i]))
          << target << ", ray " << i << " of " << count << " from " << fan.start.x << ", "
          << fan.start.y << " over " << fan.width << " by " << fan.height;
    }
  };
  check(ScanPath::scalar, "scalar");
  test::forEachVectorTarget([&](const char* target) { check(ScanPath::best, target); });
}

TEST(FanCast, agreesWithThePlainWalkOnEverySimdTarget) {
  RandomFans random(1);
  for (int i = 0; i < 200; ++i) {
    const OccupancyMap map = random.nextMap();
    for (int k = 0; k < 60; ++k) {
      const double heading = random.nextDirection();
      const FanCast fan{MapInside::findStore(map, kFanLimit),
                        map.getWidth(),
                        map.getHeight(),
                        random.nextStart(map),
                        snapped(std::cos(heading)),
                        snapped(std::sin(heading)),
                        random.nextReach()};
      if (!fan.startsInside()) continue;
      expectPlainAnswers(map, fan, random.nextDirections());
      if (testing::Test::HasFailure()) return;
    }
  }
}

// Each doubt costs a plain walk, and no wrong answer tells of too many.
TEST(FanCast, rarelyNeedsTheExactFallback) {
  RandomFans random(2);
  int rays = 0;
  int doubts = 0;
  for (int i = 0; i < 200; ++i) {
    const OccupancyMap map = random.nextMap();
    const GridPoint centre{0.5 * map.getWidth() + 0.01, 0.5 * map.getHeight() + 0.01};
    const FanCast fan{MapInside::findStore(map, kFanLimit),
                      map.getWidth(),
                      map.getHeight(),
                      centre,
                      1.0,
                      0.0,
                      400.0};
    Directions directions{FanCast::kMostRays};
    for (int k = 0; k < directions.count; ++k) {
      directions.cosines[k] = std::cos(0.1 * (k + 0.3));
      directions.sines[k] = std::sin(0.1 * (k + 0.3));
    }
    Directions::Values ways;
    findScanSteps(ScanPath::best)
        .castRays(fan, directions.cosines.data(), directions.sines.data(), directions.count,
                  ways.data());
    rays += directions.count;
    doubts += std::count_if(ways.begin(), ways.begin() + directions.count,
                            [](double way) { return std::isnan(way); });
  }
  EXPECT_LT(doubts, rays / 1000);
}

}  // namespace
}  // namespace QV::detail
