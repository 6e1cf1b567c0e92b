#include "robot/world/scene/internal/body_size.h"

#include "robot/services/internal/motion_service.h"
#include "robot/world/robot_description.h"
#include "tests/support/vocabulary.h"

namespace QV::robot {
namespace {

struct Solid {
  const char* what;
  const char* origin;
  const char* shape;
  float radius;
  float height;
};

TEST(BodySize, reachesAroundTheRobotsAxisAndUpToTheTopOfItsSolids) {
  const std::string arm =
      "<link name='arm'><collision><origin xyz='3 0 0.2'/><geometry><sphere radius='0.2'/>"
      "</geometry></collision></link><joint name='arm' type='fixed'><origin xyz='0 0 0.05'/>"
      "<parent link='base'/><child link='arm'/></joint>";
  const std::vector<Solid> solids{
      {"a box", "xyz='0.3 -0.4 0.7'", "<box size='0.6 0.8 1.2'/>", 0.5f + 0.5f, 1.3f},
      {"a sphere", "xyz='0 0 0.4'", "<sphere radius='0.3'/>", 0.3f, 0.7f},
      {"a cylinder", "xyz='0.1 0 0.6'", "<cylinder radius='0.3' length='0.8'/>", 0.4f, 1.0f},
      {"upside down", "xyz='0 0 0.6' rpy='3.1416 0 0'", "<cylinder radius='0.3' length='0.8'/>",
       0.3f, 1.0f},
      {"one that lies", "xyz='0 0 0.6' rpy='1.5708 0 0'", "<cylinder radius='0.3' length='0.8'/>",
       0.5f, 1.1f},
      {"a capsule", "xyz='0 0 0.6'", "<capsule radius='0.25' length='0.4'/>", 0.25f, 1.05f},
      {"a low one", "xyz='0 0 0'", "<sphere radius='0.1'/>", 0.1f, 0.45f},
      {"a mesh", "", "<mesh filename='body.stl'/>", 0.25f, 0.45f}};
  for (const Solid& is : solids) {
    const RobotDescription robot(std::string("<robot name='r'><link name='base'><collision>") +
                                 "<origin " + is.origin + "/><geometry>" + is.shape +
                                 "</geometry></collision></link>" + arm + "</robot>");
    const BodySize size = measureBody(robot.model, MotionService(robot.model));
    EXPECT_NEAR(size.radius, is.radius, 1e-4) << is.what;
    EXPECT_NEAR(size.height, is.height, 1e-4) << is.what;
  }
}

}  // namespace
}  // namespace QV::robot
