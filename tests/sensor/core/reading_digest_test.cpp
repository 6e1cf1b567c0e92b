#include "sensor/core/internal/reading_digest.h"

#include <cmath>
#include <limits>
#include <random>
#include <set>

#include <gmock/gmock.h>

namespace QV::sensor {
namespace {

using Model::PointMeaning;
using Model::Silence;
using Points = std::vector<Math::Position3D>;

constexpr float kNan = std::numeric_limits<float>::quiet_NaN();

struct ReadingDigestTest : testing::Test {
  ReadingDigestTest() { record.fieldOfView = {0.5f, 5.0f, 1.0f, 2}; }

  ReadingDigest digest(const Points& points) {
    view = PlanarView();
    record.points = points;
    return digestOf({record}, nature, {}, view);
  }
  bool isGarbage(const Points& points) { return digest(points).isGarbage; }

  HealthNature nature{PointMeaning::scan, Silence::never, true, true};
  Math::MetricalData record;
  PlanarView view;
};

TEST_F(ReadingDigestTest, garbageIsAQuarterOfPointsThatCantBe) {
  record.fieldOfView.minRange = 0.05f;
  const float edge = std::tan(0.5f);
  EXPECT_FALSE(isGarbage({{3.0f, 3.0f * edge + 0.06f, 0.0f}})) << "within the error of a direction";
  EXPECT_TRUE(isGarbage({{3.0f, 3.0f * edge + 0.12f, 0.0f}}));
  EXPECT_TRUE(isGarbage({{3.0f, -3.0f * edge - 0.12f, 0.0f}}));
  EXPECT_TRUE(isGarbage({{0.2f, 0.2f * edge + 0.02f, 0.0f}}));
  EXPECT_TRUE(isGarbage({{-0.2f, 0.0f, 0.0f}}));
  EXPECT_FALSE(isGarbage({{0.0f, 0.0f, 0.0f}}));
  // Who reports a miss by a larger range does so within reason.
  EXPECT_FALSE(isGarbage({{49.0f, 0.0f, 0.0f}}));
  EXPECT_TRUE(isGarbage({{49.0f, 0.0f, 11.0f}}));
  const Math::Position3D good{1.0f, 0.1f, 0.2f};
  EXPECT_TRUE(isGarbage({good, {1.0f, 0.0f, kNan}, good, good}));
  EXPECT_FALSE(isGarbage({good, {1.0f, 0.0f, kNan}, good, good, good}));
  record.fieldOfView.maxRange = 0.0f;
  EXPECT_FALSE(isGarbage({{4e4f, 0.0f, 0.0f}})) << "nobody said how far it sees";
  nature.points = PointMeaning::sighting;
  EXPECT_FALSE(isGarbage({{0.2f, 2.0f, 0.0f}})) << "only a fan has edges";
  nature.points = std::nullopt;
  EXPECT_FALSE(isGarbage({{kNan, 0.0f, 0.0f}})) << "nobody said what its points are";
}

TEST_F(ReadingDigestTest, anObstacleLiesWithinTheRangeAndMaybeAhead) {
  struct Case {
    PointMeaning points;
    Math::Position3D point;
    bool isObstacle;
    bool isAhead;
  };
  const std::vector<Case> cases{{PointMeaning::scan, {2.0f, 0.39f, 0.0f}, true, true},
                                {PointMeaning::scan, {2.0f, -0.41f, 0.0f}, true, false},
                                {PointMeaning::scan, {0.49f, 0.0f, 0.0f}, false, false},
                                {PointMeaning::scan, {0.51f, 0.0f, 0.0f}, true, true},
                                {PointMeaning::scan, {4.99f, 0.0f, 0.0f}, true, true},
                                {PointMeaning::scan, {4.99f, 0.5f, 0.0f}, false, false},
                                {PointMeaning::arc, {2.0f, 0.0f, 0.0f}, true, false}};
  for (const Case& c : cases) {
    nature.points = c.points;
    const ReadingDigest seen = digest({c.point});
    EXPECT_EQ(seen.hasObstacle, c.isObstacle) << c.point.x << ", " << c.point.y;
    EXPECT_EQ(seen.hasObstacleAhead, c.isAhead) << c.point.x << ", " << c.point.y;
    EXPECT_FALSE(seen.isBlank);
    EXPECT_EQ(view.isEmpty(), !c.isObstacle);
  }
  EXPECT_TRUE(digest({}).isBlank);
  nature.showsMotion = false;
  EXPECT_FALSE(digest({{2.0f, 0.0f, 0.0f}}).hasObstacle);
}

TEST_F(ReadingDigestTest, aCameraSeesObstaclesAtItsOwnHeightHoweverItIsTilted) {
  nature.points = PointMeaning::sighting;
  std::mt19937 chance(3);
  std::uniform_real_distribution<float> draw(-1.0f, 1.0f);
  int ahead = 0;
  for (int round = 0; round < 2000; ++round) {
    record.sensorTransform =
        Math::rotationFrom3DRotation(0.6f * draw(chance), 0.6f * draw(chance), 3.0f * draw(chance));
    const Math::Position3D level = record.sensorTransform * Math::Position3D(1.0f, 0.0f, 0.0f);
    const Math::Position3D point{3.0f + 2.5f * draw(chance), draw(chance), draw(chance)};
    const Math::Position3D there = record.sensorTransform * point;
    record.sensorTransform(2, 3) = 7.0f;
    const float side = std::remainder(std::atan2(there.y, there.x) - std::atan2(level.y, level.x),
                                      static_cast<float>(2.0 * M_PI));
    const float range = std::hypot(there.x, there.y);
    const bool isObstacle =
        std::abs(there.z) < 0.3f && range > 0.5f && range < 5.0f && std::abs(side) < 1.57f;
    const bool isAhead = isObstacle && std::abs(side) < std::atan(0.2f);
    const ReadingDigest seen = digest({point});
    ASSERT_EQ(seen.hasObstacle, isObstacle) << round;
    ASSERT_EQ(seen.hasObstacleAhead, isAhead) << round;
    ahead += isAhead ? 1 : 0;
  }
  EXPECT_GT(ahead, 100);
  // People stand, and are no measurement of every moment.
  nature.hasRate = false;
  EXPECT_TRUE(digest({{2.0f, 0.0f, 9.0f}}).hasObstacle);
  EXPECT_TRUE(view.isEmpty());
}

TEST_F(ReadingDigestTest, aFingerprintTellsEveryChangeOfThePoints) {
  const std::vector<Points> readings{{},
                                     {{1.0f, 2.0f, 3.0f}},
                                     {{1.5f, 2.0f, 3.0f}},
                                     {{1.0f, 2.5f, 3.0f}},
                                     {{1.0f, 2.0f, 3.5f}},
                                     {{2.0f, 1.0f, 3.0f}},
                                     {{1.0f, 3.0f, 2.0f}},
                                     {{1.0f, 2.0f, 3.0f}, {1.0f, 2.0f, 3.0f}},
                                     {{1.0f, 2.0f, 3.0f}, {1.5f, 2.0f, 3.0f}},
                                     {{1.5f, 2.0f, 3.0f}, {1.0f, 2.0f, 3.0f}}};
  std::set<std::uint64_t> fingerprints;
  for (const Points& points : readings) fingerprints.insert(digest(points).fingerprint);
  EXPECT_THAT(fingerprints, testing::SizeIs(readings.size()));
  EXPECT_EQ(digest(readings[8]).fingerprint, digest(readings[8]).fingerprint);
  nature.points = PointMeaning::floor;
  nature.showsMotion = false;
  EXPECT_EQ(digest(readings[8]).fingerprint, 0u);
}

}  // namespace
}  // namespace QV::sensor
