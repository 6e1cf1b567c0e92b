#include "session/internal/place_marks.h"

#include <cmath>

#include "tests/support/vocabulary.h"

namespace QV::session {
namespace {

using Model::PointMeaning;

// The robot looks along the map's y axis; the sensor sits half a metre ahead of its middle.
const Math::Pose2D kRobot(1.0f, 2.0f, std::acos(0.0f));
const Math::Transform kMounting = Math::transformFromPose2D({0.5f, 0.0f, 0.0f});

/** Points of a sensor that sees 4 m far, and what they are to become. */
struct Case {
  const char* name;
  PointMeaning meaning;
  std::vector<Math::Position3D> points;
  std::size_t hits;
  std::size_t misses;
  std::size_t echoes;
  std::optional<float> nearest;
  std::size_t floor = 0;
};

struct PlaceMarksTest : testing::TestWithParam<Case> {};

// Beyond 4 m lies what a driver writes for "no echo".
INSTANTIATE_TEST_SUITE_P(
    Records, PlaceMarksTest,
    testing::Values(
        Case{"LaserWithOneHit", PointMeaning::scan, {{2.0f, 0.0f, 0.0f}}, 1, 0, 0, 2.0f},
        Case{"ScanWithMisses",
             PointMeaning::scan,
             {{4.0f, 0.0f, 0.0f}, {1.0f, -1.0f, 0.0f}, {NAN, 0.0f, 0.0f}},
             1,
             1,
             0,
             std::hypot(1.0f, 1.0f)},
        Case{"Echo",
             PointMeaning::arc,
             {{2.9f, -0.5f, 0.0f}, {3.0f, 0.0f, 0.0f}},
             0,
             0,
             1,
             std::hypot(2.9f, 0.5f)},
        Case{"NoEcho", PointMeaning::arc, {{5.0f, 0.0f, 0.0f}}, 0, 0, 0, std::nullopt},
        Case{"ZoneWithMotion", PointMeaning::zone, {{0.5f, 0.0f, 0.0f}}, 1, 0, 0, 0.5f},
        Case{
            "ZoneThatSeesNothing", PointMeaning::zone, {{4.0f, 0.0f, 0.0f}}, 0, 0, 0, std::nullopt},
        Case{"PersonFloorAndFarWall",
             PointMeaning::sighting,
             {{2.0f, 1.0f, 1.0f}, {1.0f, 0.0f, 0.01f}, {6.0f, 0.0f, 1.0f}},
             1,
             0,
             0,
             std::sqrt(6.0f),
             1},
        Case{"HoleBesideFloor",
             PointMeaning::floor,
             {{0.1f, 0.05f, 0.0f}, {0.6f, 0.05f, 0.0f}},
             1,
             0,
             0,
             Math::norm(Math::Position3D(0.1f, 0.05f, 0.0f)),
             1},
        Case{"Touch", PointMeaning::touch, {{-0.1f, 0.0f, 0.0f}}, 1, 0, 0, std::nullopt}),
    [](const auto& record) { return record.param.name; });

TEST_P(PlaceMarksTest, countsOnlyObstacles) {
  const Math::MetricalData record{"Sensor",          "Any", {0.1f, 4.0f, 1.0f, 1}, kMounting,
                                  GetParam().points, {}};
  const Marks marks = placeMarks(record, GetParam().meaning, kRobot, Frame::robot);
  EXPECT_EQ(marks.hits.size(), GetParam().hits);
  EXPECT_EQ(marks.misses.size(), GetParam().misses);
  EXPECT_EQ(marks.floor.size(), GetParam().floor);
  EXPECT_EQ(marks.echoes.size(), GetParam().echoes);
  EXPECT_EQ(marks.nearest, GetParam().nearest);
}

TEST(PlaceMarks, placesMarksByMountingAndRobotPose) {
  Math::MetricalData record{"Sensor", "Any", {0.1f, 4.0f, 1.0f, 1}, kMounting, {{2.0f, 1.0f, 0.3f}},
                            {}};
  const Marks scan = placeMarks(record, PointMeaning::scan, kRobot, Frame::robot);
  EXPECT_NEAR(scan.hits[0].x, 0.0f, 1e-5f);
  EXPECT_NEAR(scan.hits[0].y, 4.5f, 1e-5f);
  EXPECT_EQ(scan.hits[0].z, 0.3f);
  // Simulated ones are in the ground frame already.
  const Marks simulated = placeMarks(record, PointMeaning::scan, kRobot, Frame::map);
  EXPECT_NEAR(simulated.hits[0].y, 4.0f, 1e-5f);

  record.points = {{2.0f, 0.0f, 0.0f}};
  const Marks arc = placeMarks(record, PointMeaning::arc, kRobot, Frame::robot);
  const auto ends = positionsOn(arc.echoes.at(0), 2);
  ASSERT_EQ(ends.size(), 2u);
  EXPECT_NEAR(ends[0].x, 1.0f + 2.0f * std::sin(0.5f), 1e-5f);
  EXPECT_NEAR(ends[1].x, 1.0f - 2.0f * std::sin(0.5f), 1e-5f);
  EXPECT_NEAR(ends[1].y, 2.5f + 2.0f * std::cos(0.5f), 1e-5f);
}

}  // namespace
}  // namespace QV::session
