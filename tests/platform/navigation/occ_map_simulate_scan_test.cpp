#include "platform/navigation/occ_map_simulate_scan.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>
#include <random>

#include "tests/support/sampled_ray.h"
#include "tests/support/vocabulary.h"

namespace QV {
namespace {

using Math::Pose2D;
using Math::SensorFieldOfView2D;
using test::agreesWithSamples;
using testing::Each;
using testing::Field;

using Readings = std::vector<RangeReading>;

constexpr float kPi = std::numbers::pi_v<float>;
constexpr float kInfinity = std::numeric_limits<float>::infinity();
constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();
constexpr float kLimit = 0.4f;

/** Rows from the top as in a picture: '#' occupied, '?' unknown, '.' free; cells of 0.25 m. */
OccupancyMap draw(const std::vector<std::string>& rows, const Pose2D& origin = {}) {
  OccupancyMap map(static_cast<int>(rows[0].size()), static_cast<int>(rows.size()), 0.25f, origin);
  for (int row = 0; row < map.getHeight(); ++row) {
    for (int column = 0; column < map.getWidth(); ++column) {
      const char c = rows[rows.size() - 1 - row][column];
      map.setOccupancy(column, row, c == '#' ? 1.0f : c == '?' ? 0.5f : 0.0f);
    }
  }
  return map;
}

Readings scan(const OccupancyMap& map, const SensorFieldOfView2D& fieldOfView, const Pose2D& pose,
              float occupiedAbove = kLimit) {
  Readings readings(7);
  occMapSimulateScan(map, fieldOfView, pose, readings, occupiedAbove);
  return readings;
}

/** Casts a ray straight ahead, from 0 to 10 m. */
RangeReading look(const OccupancyMap& map, const Pose2D& pose, float occupiedAbove = kLimit) {
  return scan(map, {0.0f, 10.0f, 0.0f, 1}, pose, occupiedAbove).at(0);
}

void expectHit(const RangeReading& reading, float range) {
  EXPECT_EQ(reading.status, 0);
  EXPECT_NEAR(reading.range, range, 2e-6f);
}

testing::Matcher<Readings> areMissesAt(float range, std::size_t count) {
  return AllOf(SizeIs(count),
               Each(AllOf(Field(&RangeReading::status, 1), Field(&RangeReading::range, range))));
}

std::vector<float> anglesOf(float angularRange, int count) {
  std::vector<float> angles;
  for (const auto& reading : scan(draw({"."}), {0, 1, angularRange, count}, {})) {
    angles.push_back(reading.angle);
  }
  return angles;
}

TEST(ScanFan, aFanIncludesBothEdgesAndItsMiddle) {
  EXPECT_THAT(anglesOf(1.0f, 5), testing::ElementsAre(-0.5f, -0.25f, 0.0f, 0.25f, 0.5f));
  for (const int count : {2, 20, 99, 100}) {
    const std::vector<float> angles = anglesOf(1.05f, count);
    EXPECT_EQ(angles.front(), -1.05f / 2);
    EXPECT_EQ(angles.back(), 1.05f / 2);
    EXPECT_TRUE(std::is_sorted(angles.begin(), angles.end()));
  }
}

TEST(ScanFan, aFullTurnHasNoDirectionTwice) {
  for (const float turn : {2 * kPi, 100.0f, kInfinity}) {
    EXPECT_THAT(anglesOf(turn, 4), testing::ElementsAre(-kPi, -kPi / 2, 0.0f, kPi / 2));
  }
  const std::vector<float> angles = anglesOf(2 * kPi, 300);
  ASSERT_THAT(angles, SizeIs(300));
  EXPECT_NEAR(angles.back(), kPi - 2 * kPi / 300, 1e-6f);
  // Just under a full turn both edges are there.
  EXPECT_EQ(anglesOf(std::nextafter(2 * kPi, 0.0f), 3).back(), std::nextafter(kPi, 0.0f));
}

TEST(ScanFan, aSingleRayLooksStraightAheadHoweverWideTheFan) {
  for (const float aperture : {0.0f, 1.0f, 2 * kPi, 9.0f}) {
    EXPECT_THAT(anglesOf(aperture, 1), testing::ElementsAre(0.0f));
  }
}

TEST(ScanFan, invalidFieldsOfViewGiveNoReadings) {
  const SensorFieldOfView2D senseless[] = {
      {0, 1, 1, 0},    {0, 1, 1, -5},   {0, 1, 1, 100001}, {2, 1, 1, 5},     {kNaN, 1, 1, 5},
      {0, kNaN, 1, 5}, {0, 1, kNaN, 5}, {-3, -1, 1, 5},    {0, 1, -1.0f, 5}, {0, 1, 1, INT32_MIN}};
  for (const auto& fieldOfView : senseless) {
    EXPECT_THAT(scan(draw({"..#"}), fieldOfView, {}), SizeIs(0));
  }
  EXPECT_THAT(scan(draw({"..#"}), {0, 1, 1, 100000}, {}), SizeIs(100000));
}

TEST(Scan, clampsBelowMinRangeAndMissesBeyondMaxRange) {
  const OccupancyMap map = draw({"......#"});
  const Pose2D pose(0.25f, 0.125f, 0.0f);
  const struct {
    float minRange, maxRange, range;
    int status;
  } cases[] = {
      {0.0f, 1.25f, 1.25f, 0}, {0.0f, std::nextafter(1.25f, 0.0f), std::nextafter(1.25f, 0.0f), 1},
      {1.25f, 3.0f, 1.25f, 0}, {1.5f, 3.0f, 1.5f, 0},
      {1.5f, 1.5f, 1.5f, 0},   {-1.0f, kInfinity, 1.25f, 0},
      {0.0f, 0.0f, 0.0f, 1}};
  for (const auto& c : cases) {
    const RangeReading reading = scan(map, {c.minRange, c.maxRange, 0, 1}, pose).at(0);
    EXPECT_EQ(reading.range, c.range);
    EXPECT_EQ(reading.status, c.status) << "to " << c.maxRange;
  }
}

TEST(Scan, onlyOccupanciesAboveTheLimitStopARay) {
  OccupancyMap map = draw({"..?.."});
  const Pose2D pose(0.125f, 0.125f, 0.0f);
  expectHit(look(map, pose, 0.4f), 0.375f);
  EXPECT_EQ(look(map, pose, 0.5f).status, 1);
  EXPECT_EQ(look(map, pose, kNaN).status, 1);
  map.setOccupancy(2, 0, 0.4f);
  EXPECT_EQ(look(map, pose, 0.4f).status, 1);
  map.setOccupancy(2, 0, std::nextafter(0.4f, 1.0f));
  expectHit(look(map, pose, 0.4f), 0.375f);
}

TEST(Scan, aRayThatLeavesTheMapMisses) {
  const OccupancyMap map = draw({"....", "....", "...."});
  EXPECT_THAT(scan(map, {0, 5, 2 * kPi, 64}, {0.3f, 0.3f, 0.2f}), areMissesAt(5.0f, 64));
  EXPECT_THAT(scan(map, {0, kInfinity, 2 * kPi, 64}, {0.3f, 0.3f, 0.2f}),
              areMissesAt(kInfinity, 64));
}

TEST(Scan, aPoseOutsideTheMapCastsIntoIt) {
  const OccupancyMap map = draw({"....", ".#..", "...."});
  expectHit(look(map, {-1.0f, 0.375f, 0.0f}), 1.25f);
  expectHit(look(map, {3.0f, 0.375f, kPi}), 2.5f);
  expectHit(look(map, {0.375f, -2.0f, kPi / 2}), 2.25f);
  expectHit(look(map, {0.375f, 1.75f, -kPi / 2}), 1.25f);
  expectHit(look(map, {-1.0f, -1.0f, kPi / 4}), 1.25f * std::sqrt(2.0f));
  EXPECT_EQ(look(map, {-1.0f, 0.375f, kPi}).status, 1);
  EXPECT_EQ(look(map, {-1.0f, 0.9f, 0.0f}).status, 1);
  // Enters through the lower side, in the middle of a column.
  expectHit(look(draw({"#"}), {-0.3f, -0.2f, std::atan2(0.2f, 0.4f)}), std::sqrt(0.2f));
}

TEST(Scan, farStartsAndHugeRangesTerminate) {
  const OccupancyMap map = draw({"....", ".#..", "...."});
  const float far[] = {1e6f, 1e12f, 1e30f, std::numeric_limits<float>::max()};
  for (const float distance : far) {
    for (const Pose2D& pose : {Pose2D(distance, distance, 0.7f), Pose2D(-distance, 0.3f, 0.0f),
                               Pose2D(0.3f, -distance, 1.5f), Pose2D(0.3f, 0.3f, distance)}) {
      for (const float maxRange : {1.0f, 1e30f, kInfinity}) {
        EXPECT_THAT(scan(map, {0, maxRange, 2 * kPi, 100}, pose), SizeIs(100));
      }
    }
  }
  EXPECT_NEAR(scan(map, {0, kInfinity, 0, 1}, {-1e6f, 0.375f, 0.0f}).at(0).range, 1e6f, 1.0f);
}

TEST(Scan, posesThatAreNotFiniteGiveMisses) {
  const OccupancyMap map = draw({"###", "#.#", "###"});
  for (const float bad : {kNaN, kInfinity, -kInfinity}) {
    for (const Pose2D& pose :
         {Pose2D(bad, 0.3f, 0), Pose2D(0.3f, bad, 0), Pose2D(0.3f, 0.3f, bad)}) {
      const Readings readings = scan(map, {0.1f, 4.0f, 1.0f, 3}, pose);
      EXPECT_THAT(readings, areMissesAt(4.0f, 3));
      EXPECT_EQ(readings[0].angle, -0.5f);
    }
  }
}

TEST(ScanOnEdges, aRayAlongAnEdgeRunsInTheUpperCell) {
  const OccupancyMap map = draw({"..#.",  //
                                 "....",  //
                                 ".#..",  //
                                 "...."});
  expectHit(look(map, {0.0f, 0.25f, 0.0f}), 0.25f);
  expectHit(look(map, {0.0f, 0.75f, 0.0f}), 0.5f);
  EXPECT_EQ(look(map, {0.0f, 0.5f, 0.0f}).status, 1);
  EXPECT_EQ(look(map, {0.0f, 0.0f, -0.0f}).status, 1);
  EXPECT_EQ(look(map, {0.0f, 1.0f, 0.0f}).status, 1);
}

TEST(ScanOnEdges, aStartOnACornerOnlyMeetsTheCellItGoesInto) {
  const OccupancyMap walls = draw({"##", "##"});
  for (int quarter = 0; quarter < 4; ++quarter) {
    OccupancyMap map = walls;
    const float heading = -0.75f * kPi + static_cast<float>(quarter) * kPi / 2;
    map.setOccupancy(quarter == 1 || quarter == 2, quarter >= 2, 0.0f);
    EXPECT_EQ(look(map, {0.25f, 0.25f, heading}).status, 1) << "quarter " << quarter;
    expectHit(look(walls, {0.25f, 0.25f, heading}), 0.0f);
  }
}

/** Random maps of a few cells, poses in and around them, fans of any kind. */
class RandomScans {
 public:
  explicit RandomScans(unsigned seed) : random(seed) {}

  OccupancyMap nextMap() {
    const float resolution = uniform(0.02f, 0.5f);
    OccupancyMap map(integer(1, 60), integer(1, 60), resolution,
                     {uniform(-3, 3), uniform(-3, 3), integer(0, 2) ? uniform(-4, 4) : 0.0f}, 0.0f);
    const float density = std::pow(uniform(0, 1), 3.0f);
    for (int row = 0; row < map.getHeight(); ++row) {
      for (int column = 0; column < map.getWidth(); ++column) {
        if (uniform(0, 1) < density) map.setOccupancy(column, row, uniform(0.3f, 1.0f));
      }
    }
    return map;
  }

  SensorFieldOfView2D nextFieldOfView() {
    const float maxRange = uniform(0.1f, 12.0f);
    return {integer(0, 1) ? 0.0f : uniform(0.0f, maxRange), maxRange, uniform(0.0f, 7.0f),
            integer(1, 40)};
  }

  Pose2D nextPose(const OccupancyMap& map) {
    const Math::Position2D position =
        map.getCellCentre(integer(-5, map.getWidth() + 4), integer(-5, map.getHeight() + 4));
    const float half = 0.5f * map.getResolution();
    return {position.x + uniform(-half, half), position.y + uniform(-half, half), uniform(-7, 7)};
  }

 private:
  float uniform(float low, float high) {
    return std::uniform_real_distribution<float>(low, high)(random);
  }
  int integer(int low, int high) { return std::uniform_int_distribution<int>(low, high)(random); }

  std::mt19937 random;
};

TEST(Scan, agreesWithDenseSamplesOnRandomMaps) {
  RandomScans random(20);
  for (int i = 0; i < 600; ++i) {
    const OccupancyMap map = random.nextMap();
    const SensorFieldOfView2D fieldOfView = random.nextFieldOfView();
    const Pose2D pose = random.nextPose(map);
    for (const RangeReading& reading : scan(map, fieldOfView, pose)) {
      ASSERT_TRUE(agreesWithSamples(reading, map, fieldOfView, pose, kLimit, 0.004))
          << "scan " << i;
    }
  }
}

}  // namespace
}  // namespace QV
