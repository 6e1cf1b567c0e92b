#include "outlets/web/internal/robot_outline.h"

#include <gmock/gmock.h>

#include "robot/world/robot_description.h"
#include "tests/support/vocabulary.h"

namespace QV::outlets {
namespace {

std::vector<Math::Position2D> outlineOfDescribed(const std::string& parts) {
  return outlineOf(robot::RobotDescription("<robot name=\"r\">" + parts + "</robot>").model);
}

auto isAt(float x, float y) {
  return AllOf(testing::Field(&Math::Position2D::x, FloatNear(x, 1e-4f)),
               testing::Field(&Math::Position2D::y, FloatNear(y, 1e-4f)));
}

// A case with a mast that lies to the left, in front of which nothing reaches.
constexpr char kCase[] = R"(
  <link name="base"><collision name="case"><origin xyz="0.1 0 0.2"/>
    <geometry><box size="0.6 0.4 0.3"/></geometry></collision></link>
  <link name="mast"><collision name="mast"><origin xyz="0 0 0.5"/>
    <geometry><box size="0.1 0.2 1"/></geometry></collision></link>
  <joint name="Mast" type="revolute"><parent link="base"/><child link="mast"/>
    <origin xyz="0 0 0.2" rpy="-1.5707963 0 0"/><axis xyz="1 0 0"/>
    <limit lower="-2" upper="2" effort="1" velocity="1"/></joint>)";

TEST(RobotOutline, isTheHullOfAllSolidsFromAbove) {
  EXPECT_THAT(
      outlineOfDescribed(kCase),
      testing::UnorderedElementsAre(isAt(-0.2f, -0.2f), isAt(0.4f, -0.2f), isAt(0.4f, 0.2f),
                                    isAt(0.05f, 1.0f), isAt(-0.05f, 1.0f), isAt(-0.2f, 0.2f)));
}

TEST(RobotOutline, roundsWhatIsRoundAndIsEmptyWithoutSolids) {
  for (const char* solid : {"<sphere radius=\"0.3\"/>", "<cylinder radius=\"0.3\" length=\"1\"/>",
                            "<capsule radius=\"0.3\" length=\"1\"/>"}) {
    const auto round = outlineOfDescribed("<link name=\"base\"><collision><geometry>" +
                                          std::string(solid) + "</geometry></collision></link>");
    EXPECT_GT(round.size(), 30u);
    for (const auto& corner : round) EXPECT_NEAR(norm(corner), 0.3f, 1e-4f) << solid;
  }
  EXPECT_THAT(outlineOfDescribed("<link name=\"base\"><collision><geometry><mesh "
                                 "filename=\"a.stl\"/></geometry></collision></link>"),
              IsEmpty());
}

}  // namespace
}  // namespace QV::outlets
