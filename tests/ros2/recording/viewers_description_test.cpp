#include "ros2/recording/internal/viewers_description.h"

#include <gmock/gmock.h>

#include "platform/model/model_utils.h"
#include "ros2/bag/bag_reader.h"
#include "ros2/messages/sensor_msgs.h"
#include "tests/ros2/recording/recorded_session.h"
#include "tests/support/temporary_folder.h"

namespace QV::ros2 {
namespace {

constexpr char kRobot[] = R"(<robot name="r"><link name="body">
  <collision><geometry><box size="1 2 3"/></geometry></collision>
  <collision name="arm"><origin xyz="1 2 3" rpy="0.3 -0.5 1.1"/>
    <geometry><capsule radius="0.1" length="0.4"/></geometry></collision>
  <collision><geometry><sphere radius="1"/></geometry></collision>
</link></robot>)";

const Model::CollisionShape& shapeOf(const Model::Robot& robot, const std::string& name) {
  return *robot.collisionShapes.at(name);
}

TEST(ViewersDescriptionTest, aCapsuleBecomesACylinderWithASphereAtEachEnd) {
  const Model::Robot exact = Model::ModelUtils::robotFromXml(kRobot);
  const Model::Robot sut = Model::ModelUtils::robotFromXml(describeForViewers(kRobot));
  ASSERT_EQ(sut.collisionShapes.size(), 5u);
  const Math::Transform arm = shapeOf(exact, "arm").getTransform();
  EXPECT_EQ(shapeOf(sut, "arm").getShape(), Math::Shape3D(Math::Cylinder{0.1f, 0.4f}));
  EXPECT_EQ(shapeOf(sut, "arm").getTransform(), arm);
  EXPECT_EQ(shapeOf(sut, "body#2").getShape(), Math::Shape3D(Math::Sphere{1.0f}));
  for (const auto& [name, end] : {std::pair("body#3", 0.2f), std::pair("body#4", -0.2f)}) {
    EXPECT_EQ(shapeOf(sut, name).getShape(), Math::Shape3D(Math::Sphere{0.1f}));
    const auto expected =
        Math::position3DFromTransform(arm * Math::Transform::fromPosition({0.0f, 0.0f, end}));
    const auto given = Math::position3DFromTransform(shapeOf(sut, name).getTransform());
    EXPECT_NEAR(given.x, expected.x, 1e-5f) << name;
    EXPECT_NEAR(given.y, expected.y, 1e-5f) << name;
    EXPECT_NEAR(given.z, expected.z, 1e-5f) << name;
  }
  const std::string none = "<robot name='r'><link name='body'/></robot>";
  EXPECT_EQ(describeForViewers(none), none);
}

TEST(ViewersDescriptionTest, aLinkHasItsOtherNameWhereverItIsNamed) {
  const std::string before = R"(<robot name="r"><kind code="1"/><body link="base"/>
    <link name="base"/><link name="base_top"/><gazebo reference="base"/>
    <joint name="j" type="fixed"><parent link="base"/><child link="base_top"/></joint>
    <sensor name="A" type="Touch"><parent link="base"/></sensor>
    <sensor name="B" type="DepthCamera"><parent link="base_top"/>
      <property key="cameraName" value="base"/></sensor></robot>)";
  const auto nameOf = [](const std::string& link) { return link == "base" ? "base_link" : link; };
  const std::string told = describeForViewers(before, nameOf);
  EXPECT_THAT(told, testing::Not(testing::HasSubstr("\"base\"")));
  const Model::Robot sut = Model::ModelUtils::robotFromXml(told);
  EXPECT_EQ(sut.rootLink + " " + sut.bodyLink, "base_link base_link");
  EXPECT_THAT(sut.links, testing::ElementsAre("base_link", "base_top"));
  EXPECT_EQ(sut.sensorConfigs.at("A").parentLink, "base_link");
  EXPECT_EQ(describeForViewers(before, [](const std::string& link) { return link; }), before);
}

TEST(ViewersDescriptionTest, aRecordingHasTheViewersDescriptionAndTheOriginal) {
  const test::TemporaryFolder folder;
  const std::string path = folder / "run.mcap";
  const auto session = session::openVirtual("porter");
  test::recordSession(*session, path, 1);
  BagReader sut(path);
  std::string shown;
  while (const auto message = sut.next()) {
    if (message->topic->name == "/robot_description")
      shown = fromCdr<std_msgs::String>(message->data).data;
  }
  const Bytes kept = sut.readAttachment(0)->data;
  const std::string exact(kept.begin(), kept.end());
  EXPECT_THAT(exact, testing::HasSubstr("<capsule"));
  EXPECT_EQ(shown, describeForViewers(exact));
  EXPECT_THAT(shown, testing::Not(testing::HasSubstr("<capsule")));
}

}  // namespace
}  // namespace QV::ros2
