#include "sensor/utils/internal/field_of_view_obstruction.h"

#include <numbers>
#include <string>

#include "tests/support/fake_robot.h"

namespace QV::sensor {
namespace {

using Math::Transform;

constexpr float kPi = std::numbers::pi_v<float>;

using Shapes = std::vector<std::shared_ptr<Model::CollisionShape>>;

std::string link(const std::string& name, const std::string& collisions) {
  return "<link name='" + name + "'>" + collisions + "</link><joint name='" + name +
         "' type='fixed'><parent link='base'/><child link='" + name + "'/></joint>";
}

std::string collision(const std::string& name, const std::string& shape) {
  return "<collision name='" + name + "'><geometry>" + shape + "</geometry></collision>";
}

std::string robot(const std::string& links) {
  return "<robot name='r'><link name='base'/>" + links + "</robot>";
}

std::shared_ptr<Model::CollisionShape> ball(const std::string& joint, const Transform& transform) {
  return std::make_shared<Model::CollisionShape>("ball", Math::Sphere{0.05f}, transform, joint);
}

/** A robot whose model hands out `description`. */
struct ObstructionTest : test::FakeRobotTest {
  ObstructionTest() {
    const auto model = boost::make_shared<QVModule>("QVRobotModel");
    model->bindMethod("getConfig", [this] { return description; });
    broker->registerModule(model);
  }

  std::vector<std::string> namesOfLoadedShapes() {
    initCollisionShapesAndJointConfig(broker, shapes);
    std::vector<std::string> names;
    for (const auto& shape : shapes) names.push_back(shape->getName());
    return names;
  }

  std::string description;
  Shapes shapes;
};

TEST_F(ObstructionTest, onlyTheForearmsAreLoadedInTheOrderOfTheirNames) {
  const std::string sphere = "<sphere radius='0.1'/>";
  description = robot(link("RElbowRoll", collision("b", sphere) + collision("d", sphere)) +
                      link("LElbowRoll", collision("c", sphere) + collision("a", sphere)) +
                      link("LElbowYaw", collision("yaw", sphere)) +
                      link("Head", collision("head", "<mesh filename='head.stl'/>")));
  EXPECT_THAT(namesOfLoadedShapes(), ElementsAre("a", "b", "c", "d"));
  EXPECT_EQ(shapes[1]->getParentJoint(), "RElbowRoll");
  EXPECT_THAT(log.lines(), IsEmpty());
  EXPECT_THAT(buildTransformsFromCollisionShapes(shapes, QVMotionProxy(broker)), SizeIs(4));
  EXPECT_THAT(broker->callsTo("QVMotion"), ElementsAre("getTransform[\"LElbowRoll\", 0, true]",
                                                       "getTransform[\"RElbowRoll\", 0, true]",
                                                       "getTransform[\"LElbowRoll\", 0, true]",
                                                       "getTransform[\"RElbowRoll\", 0, true]"));

  description = robot(link("Head", collision("head", sphere)));
  EXPECT_THAT(namesOfLoadedShapes(), IsEmpty());
}

TEST_F(ObstructionTest, withoutABrokerThereIsAnError) {
  EXPECT_THAT(errorOf([this] { initCollisionShapesAndJointConfig(nullptr, shapes); }),
              HasSubstr("no broker given"));
}

TEST_F(ObstructionTest, aShapeThatCannotBeTestedIsLeftOutWithAWarning) {
  description = robot(link("LElbowRoll", collision("blob", "<mesh filename='blob.stl'/>") +
                                             collision("bone", "<sphere radius='0.1'/>")));
  EXPECT_THAT(namesOfLoadedShapes(), ElementsAre("bone"));
  EXPECT_THAT(log.lines(),
              ElementsAre("warning SensorUtils.initCollisionShapesAndJointConfig: Ignoring blob: "
                          "isIntersectionConeShape: shapes of the kind \"mesh\" are not "
                          "supported"));
}

// The sensor looks back along x at a joint that points to the left, with the ball before it.
TEST(IsSensorFOVObstructed, looksAMetreAndAHalfAlongTheSensorsXAxis) {
  const Transform sensor =
      Transform::fromPosition({1, 0.3f, 0.5f}) * Math::rotationFrom3DRotation(0, 0, kPi);
  const Shapes shapes = {ball("LElbowRoll", Transform::fromPosition({0.3f, 0, 0}))};
  const auto isSeenAt = [&](float x, float y) {
    const Transform joint =
        Transform::fromPosition({x, y, 0.5f}) * Math::rotationFrom3DRotation(0, 0, kPi / 2);
    return isSensorFOVObstructed(sensor, shapes, {joint}, 0.1f);
  };
  EXPECT_TRUE(isSeenAt(-0.549f, 0));
  EXPECT_FALSE(isSeenAt(-0.551f, 0));
  EXPECT_FALSE(isSeenAt(1.2f, 0));
  EXPECT_FALSE(isSeenAt(0.0f, 0.3f));
}

TEST(IsSensorFOVObstructed, stopsAtTheFirstShapeThatIsInTheWay) {
  const auto mesh = std::make_shared<Model::CollisionShape>("m", Math::UnsupportedShape{"mesh"},
                                                            Transform(), "RElbowRoll");
  const auto isSeen = [&](const Shapes& shapes, const std::vector<Transform>& joints) {
    return isSensorFOVObstructed(Transform(), shapes, joints, 0.2f);
  };
  const Transform before = Transform::fromPosition({1, 0, 0});
  const Transform behind = Transform::fromPosition({-1, 0, 0});
  EXPECT_TRUE(isSeen({ball("LElbowRoll", Transform()), mesh}, {before, before}));
  EXPECT_THAT(errorOf([&] {
                isSeen({ball("LElbowRoll", Transform()), mesh}, {behind, behind});
              }),
              HasSubstr("not supported"));
  EXPECT_FALSE(isSeen({}, {}));
  EXPECT_THROW(isSeen({mesh}, {}), std::out_of_range);
}

}  // namespace
}  // namespace QV::sensor
