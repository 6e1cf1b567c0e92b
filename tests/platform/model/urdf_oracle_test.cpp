#include <map>
#include <string>

#include <gmock/gmock.h>
#include <urdf_model/model.h>
#include <urdf_parser/urdf_parser.h>

#include "platform/model/model_utils.h"
#include "tests/support/real_data.h"

namespace QV::Model {
namespace {

void expectSame(const Math::Transform& actual, const urdf::Pose& expected,
                const std::string& what) {
  EXPECT_NEAR(actual(0, 3), expected.position.x, 1e-6) << what;
  EXPECT_NEAR(actual(1, 3), expected.position.y, 1e-6) << what;
  EXPECT_NEAR(actual(2, 3), expected.position.z, 1e-6) << what;
  const urdf::Vector3 axes[] = {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}};
  for (int column = 0; column < 3; ++column) {
    const urdf::Vector3 turned = expected.rotation * axes[column];
    EXPECT_NEAR(actual(0, column), turned.x, 2e-6) << what;
    EXPECT_NEAR(actual(1, column), turned.y, 2e-6) << what;
    EXPECT_NEAR(actual(2, column), turned.z, 2e-6) << what;
  }
}

Math::Shape3D shapeOf(const urdf::Geometry& geometry) {
  const auto number = [](double value) { return static_cast<float>(value); };
  if (const auto* box = dynamic_cast<const urdf::Box*>(&geometry)) {
    return Math::Box{{number(box->dim.x), number(box->dim.y), number(box->dim.z)}};
  }
  if (const auto* sphere = dynamic_cast<const urdf::Sphere*>(&geometry)) {
    return Math::Sphere{number(sphere->radius)};
  }
  if (const auto* cylinder = dynamic_cast<const urdf::Cylinder*>(&geometry)) {
    return Math::Cylinder{number(cylinder->radius), number(cylinder->length)};
  }
  return Math::UnsupportedShape{"mesh"};
}

JointType typeOf(const urdf::Joint& joint) {
  const std::map<int, JointType> types = {{urdf::Joint::FIXED, JointType::fixed},
                                          {urdf::Joint::REVOLUTE, JointType::revolute},
                                          {urdf::Joint::CONTINUOUS, JointType::continuous},
                                          {urdf::Joint::PRISMATIC, JointType::prismatic}};
  return types.at(joint.type);
}

void expectSame(const JointConfig& actual, const urdf::Joint& expected) {
  const std::string& name = actual.name;
  EXPECT_EQ(actual.type, typeOf(expected)) << name;
  EXPECT_EQ(actual.parentLink, expected.parent_link_name) << name;
  EXPECT_EQ(actual.childLink, expected.child_link_name) << name;
  expectSame(actual.origin, expected.parent_to_joint_origin_transform, name);
  if (expected.type != urdf::Joint::FIXED) {
    EXPECT_NEAR(actual.axis.x, expected.axis.x, 1e-6) << name;
    EXPECT_NEAR(actual.axis.y, expected.axis.y, 1e-6) << name;
    EXPECT_NEAR(actual.axis.z, expected.axis.z, 1e-6) << name;
  }
  ASSERT_EQ(actual.limits.has_value(), expected.limits != nullptr) << name;
  if (actual.limits) {
    EXPECT_FLOAT_EQ(actual.limits->lower, static_cast<float>(expected.limits->lower)) << name;
    EXPECT_FLOAT_EQ(actual.limits->upper, static_cast<float>(expected.limits->upper)) << name;
    EXPECT_FLOAT_EQ(actual.limits->velocity, static_cast<float>(expected.limits->velocity)) << name;
  }
  ASSERT_EQ(actual.mimic.has_value(), expected.mimic != nullptr) << name;
  if (actual.mimic) {
    EXPECT_EQ(actual.mimic->joint, expected.mimic->joint_name);
    EXPECT_FLOAT_EQ(actual.mimic->multiplier, static_cast<float>(expected.mimic->multiplier));
    EXPECT_FLOAT_EQ(actual.mimic->offset, static_cast<float>(expected.mimic->offset));
  }
}

void expectSameShapes(const Robot& actual, const urdf::Link& expected) {
  int index = 0;
  for (const auto& collision : expected.collision_array) {
    const std::string name =
        collision->name.empty() ? expected.name + "#" + std::to_string(index) : collision->name;
    ++index;
    ASSERT_TRUE(actual.collisionShapes.contains(name)) << name;
    const CollisionShape& shape = *actual.collisionShapes.at(name);
    EXPECT_EQ(shape.getShape(), shapeOf(*collision->geometry)) << name;
    EXPECT_EQ(shape.getParentJoint(), expected.parent_joint ? expected.parent_joint->name : "");
    expectSame(shape.getTransform(), collision->origin, name);
  }
}

class UrdfOracle : public testing::TestWithParam<const char*> {};

TEST_P(UrdfOracle, aRealDescriptionIsReadAsByAnIndependentUrdfReader) {
  const auto xml = test::readRealData(std::string("urdf/") + GetParam());
  if (!xml) GTEST_SKIP() << "no real data";
  const urdf::ModelInterfaceSharedPtr expected = urdf::parseURDF(*xml);
  ASSERT_TRUE(expected);
  const Robot actual = ModelUtils::robotFromXml(*xml);

  EXPECT_EQ(actual.name, expected->getName());
  EXPECT_EQ(actual.rootLink, expected->getRoot()->name);
  EXPECT_EQ(actual.links.size(), expected->links_.size());
  ASSERT_EQ(actual.joints.size(), expected->joints_.size());
  for (const JointConfig& joint : actual.joints) {
    ASSERT_TRUE(expected->joints_.contains(joint.name)) << joint.name;
    expectSame(joint, *expected->joints_.at(joint.name));
  }
  std::size_t shapes = 0;
  for (const auto& [name, link] : expected->links_) {
    shapes += link->collision_array.size();
    expectSameShapes(actual, *link);
  }
  EXPECT_GT(shapes, 0u);
  EXPECT_EQ(actual.collisionShapes.size(), shapes);
}

INSTANTIATE_TEST_SUITE_P(RealRobots, UrdfOracle,
                         testing::Values("reachy.urdf", "turtlebot3_waffle.urdf",
                                         "panda_collision.urdf"),
                         [](const auto& instance) {
                           const std::string file = instance.param;
                           return file.substr(0, file.find('.'));
                         });

}  // namespace
}  // namespace QV::Model
