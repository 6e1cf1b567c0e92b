#include "ros2/recording/internal/frame_topics.h"

#include <cmath>
#include <fstream>
#include <map>
#include <set>

#include <gmock/gmock.h>

#include "robot/world/virtual_robot.h"
#include "session/internal/session_parts.h"
#include "session/open.h"
#include "tests/support/temporary_folder.h"

namespace QV::ros2 {
namespace {

constexpr char kNodding[] = R"(<robot name="mine"><kind code="1"/><link name="base"/>
  <link name="head"/><link name="camera"/>
  <joint name="neck" type="revolute"><parent link="base"/><child link="head"/>
    <axis xyz="0 0 1"/><limit lower="-1" upper="1" effort="1" velocity="1"/></joint>
  <joint name="mount" type="fixed"><parent link="head"/><child link="camera"/></joint>
  <sensor name="Ear" type="Sonar"><parent link="base"/><memory_key>ear</memory_key></sensor>
  <sensor name="Eye" type="DepthCamera"><parent link="camera"/>
    <property key="horizontalAngularRange" value="1"/><property key="verticalAngularRange" value="1"/>
    <property key="modelCode" value="1"/><property key="cameraName" value="camera"/></sensor></robot>)";

/** Keeps the last frames of each topic. */
struct Frames : MessageSink {
  std::uint16_t addTopic(const SessionTopic& topic) override {
    names.push_back(topic.name);
    return static_cast<std::uint16_t>(names.size() - 1);
  }
  void xWrite(std::uint16_t topic, std::uint64_t, const MessageType& type,
              const void* message) override {
    if (&type != &tf2_msgs::TFMessage::getType()) return;
    auto& frames = all[names[topic]] = {};
    for (const auto& frame : static_cast<const tf2_msgs::TFMessage*>(message)->transforms)
      frames[frame.child_frame_id] = frame;
  }

  std::vector<std::string> names;
  std::map<std::string, std::map<std::string, geometry_msgs::TransformStamped>> all;
};

TEST(FrameTopicsTest, aSensorThatAJointMovesHasItsFrameOnTfWhereItIs) {
  const test::TemporaryFolder folder;
  const std::string path = folder / "robot.urdf";
  std::ofstream(path) << kNodding;
  const auto session = session::openVirtual(path);
  Frames frames;
  FrameTopics sut(frames, *session, FrameNames(*session));
  const auto namesOn = [&](const std::string& topic) {
    std::set<std::string> names;
    for (const auto& [name, frame] : frames.all[topic]) names.insert(name);
    return names;
  };
  EXPECT_THAT(namesOn("/tf_static"), testing::ElementsAre("Ear"));
  for (const double angle : {0.5, -0.2}) {
    session::robotOf(*session).getVirtualRobot()->setJointPositions({{"neck", angle}});
    sut.writeFrames({}, ko::Clock::now());
    ASSERT_THAT(namesOn("/tf"), testing::ElementsAre("Eye", "Eye_optical", "base", "odom"));
    EXPECT_EQ(frames.all["/tf"]["Eye_optical"].header.frame_id, "Eye");
    EXPECT_NEAR(frames.all["/tf"]["Eye"].transform.rotation.z, std::sin(0.5 * angle), 1e-6);
  }
  EXPECT_THAT(namesOn("/tf_static"), testing::ElementsAre("Ear"));
}

}  // namespace
}  // namespace QV::ros2
