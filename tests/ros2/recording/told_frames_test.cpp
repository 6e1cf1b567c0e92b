#include <memory>
#include <optional>
#include <utility>

#include <boost/make_shared.hpp>
#include <gmock/gmock.h>

#include "platform/ko/simulated_time.h"
#include "platform/model/model_utils.h"
#include "ros2/messages/scene_msgs.h"
#include "ros2/recording/internal/told_modules.h"
#include "sensor/hosting/navigation_module.h"
#include "tests/ros2/support/sample_messages.h"
#include "tests/support/log_capture.h"

namespace QV::ros2 {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

const std::string kMountedRobot = R"(<robot name="mine"><kind code="1"/><link name="base_link"/>
  <sensor name="Front" type="Laser"><origin xyz="0.2 0 0" rpy="0 0 1.5707963"/><property key="regIndex" value="1"/>
    <property key="maximumDetectionDistance" value="5"/>
    <property key="minimumDetectionDistance" value="0.1"/>
    <property key="horizontalAngularRange" value="2"/>
    <property key="setOperationMode" value="set"/><property key="getOperationMode" value="get"/>
    <property key="timestamp" value="time"/><memory_keys pattern="L{i}/{X,Y}" count="5"/></sensor>
  <sensor name="Ear" type="Sonar"><property key="frame" value="ear"/>
    <memory_key>ear</memory_key></sensor>
  <sensor name="Eye" type="DepthCamera"><origin xyz="0 0 1"/>
    <property key="horizontalAngularRange" value="1"/><property key="verticalAngularRange" value="1"/>
    <property key="modelCode" value="1"/><property key="cameraName" value="Front"/></sensor></robot>)";

sensor_msgs::LaserScan scanIn(const std::string& frame) {
  sensor_msgs::LaserScan scan;
  scan.header.frame_id = frame;
  scan.angle_min = 0.5707963f;
  scan.angle_increment = 0.5f;
  scan.range_min = 0.1f;
  scan.range_max = 5.0f;
  scan.ranges.assign(5, 2.0f);
  return scan;
}

sensor_msgs::Image imageIn(const std::string& frame) {
  auto image = test::sampleImage("32FC1", 4, 0x3f);
  image.header.frame_id = frame;
  return image;
}

constexpr geometry_msgs::Quaternion kStraight{0.0, 0.0, 0.0, 1.0};
constexpr geometry_msgs::Quaternion kLeft{0.0, 0.0, 0.70710678, 0.70710678};
constexpr geometry_msgs::Quaternion kUpsideDown{0.0, 1.0, 0.0, 0.0};
constexpr geometry_msgs::Quaternion kOptics{-0.5, 0.5, -0.5, 0.5};
/** The optics of a camera that lies on its side. */
constexpr geometry_msgs::Quaternion kTiltedOptics{-0.70710678, 0.0, -0.70710678, 0.0};

tf2_msgs::TFMessage framed(const std::string& parent, const std::string& child, double x,
                           const geometry_msgs::Quaternion& turn = kStraight) {
  tf2_msgs::TFMessage message;
  auto& frame = message.transforms.emplace_back();
  frame.header.frame_id = parent;
  frame.child_frame_id = child;
  frame.transform.translation.x = x;
  frame.transform.rotation = turn;
  return message;
}

nav_msgs::Odometry odometryOf(const std::string& child, double x) {
  nav_msgs::Odometry odometry;
  odometry.header.frame_id = "odom";
  odometry.child_frame_id = child;
  odometry.pose.pose.position.x = x;
  odometry.pose.pose.orientation.w = 1.0;
  return odometry;
}

/** A robot that is read by a description. */
struct ToldFramesTest : testing::Test {
  ToldFramesTest() { startAgain(); }

  template <typename Message>
  void tell(const std::string& topic, const Message& message) {
    const Bytes cdr = toCdr(message);
    sut->tell({topic, Message::getType().getName(), cdr});
  }
  /** What the log has of a message; empty if it is used. */
  template <typename Message>
  std::string refusalOf(const std::string& topic, const Message& message) {
    log.clear();
    tell(topic, message);
    const auto lines = log.lines(ko::log::Level::warning);
    for (int i = 0; i < 10; ++i) tell("/Front/scan", scanIn("Front"));
    for (int i = 0; i < 10; ++i) tell("/Ear/range", test::sampleRange(0.1f, 1.0f, "ear"));
    for (int i = 0; i < 10; ++i) tell("/Eye/image", imageIn("Eye"));
    return lines.empty() ? "" : lines.front();
  }
  void passTwoSeconds() {
    tell("/joint_states", sensor_msgs::JointState());
    time.advance(boost::chrono::milliseconds(2100));
    tell("/joint_states", sensor_msgs::JointState());
  }

  /** Ends the session, and begins another one. */
  void startAgain() {
    hosting.reset();
    sut = std::make_unique<ToldModules>(
        kMountedRobot,
        surveyDescription(Model::ModelUtils::robotFromXml(kMountedRobot),
                          Model::SensorKinds::standard()),
        [](const auto&) { return ko::Clock::now(); }, "Test");
    navigation = boost::make_shared<sensor::NavigationModule>(sut->getBroker());
    hosting.emplace(sut->getBroker(), navigation);
    navigation->getManager().subscribe("test");
  }

  test::LogCapture log;
  ko::SimulatedTime time;
  std::unique_ptr<ToldModules> sut;
  boost::shared_ptr<sensor::NavigationModule> navigation;
  std::optional<ScopedModule> hosting;
};

TEST_F(ToldFramesTest, aMessageIsInItsSensorsFrameOrInOneOfTfAtTheSamePlace) {
  EXPECT_EQ(refusalOf("/Front/scan", scanIn("anything")), "");
  passTwoSeconds();
  EXPECT_EQ(refusalOf("/Front/scan", scanIn("anything")), "") << "without tf";
  tell("/tf", framed("odom", "base_link", 3.0));
  tell("/tf", framed("base_link", "laser_link", 0.25));
  tell("/tf", framed("base_link", "turned", 0.2, kLeft));
  EXPECT_EQ(refusalOf("/Front/scan", scanIn("/laser_link")), "");
  EXPECT_THAT(refusalOf("/Front/scan", scanIn("base_link")),
              HasSubstr("a frame where the description mounts Front expected, \"base_link\" "
                        "given, 0.2"));
  EXPECT_THAT(refusalOf("/Front/scan", scanIn("turned")), HasSubstr(" 1.57"));
  EXPECT_THAT(refusalOf("/Front/scan", scanIn("anything")),
              HasSubstr("a frame that tf connects to base_link expected, \"anything\" given"));
  EXPECT_EQ(refusalOf("/Ear/range", test::sampleRange(0.1f, 1.0f, "ear")), "");
  EXPECT_THAT(refusalOf("/Ear/range", test::sampleRange(0.1f, 1.0f, "nose")),
              HasSubstr("frame ear expected, \"nose\" given"));
  EXPECT_EQ(refusalOf("/Ear/range", test::sampleRange(0.1f, 1.0f, "base_link")), "");
}

// The scan's middle is to the left of its frame.
TEST_F(ToldFramesTest, aLaserMayLookAsideButNotUpsideDownNorACameraLieOnItsSide) {
  for (const auto& [name, turn] :
       {std::pair("laser_link", kStraight), std::pair("rolled", kUpsideDown),
        std::pair("optics", kOptics), std::pair("tilted", kTiltedOptics)})
    tell("/tf", framed("base_link", name, 0.1, turn));
  EXPECT_EQ(refusalOf("/Front/scan", scanIn("laser_link")), "");
  EXPECT_THAT(refusalOf("/Front/scan", scanIn("rolled")), HasSubstr(" 3.14"));
  EXPECT_THAT(refusalOf("/Eye/image", imageIn("tilted")), HasSubstr(" 1.57"));
  EXPECT_EQ(refusalOf("/Eye/image", imageIn("optics")), "");
  EXPECT_EQ(refusalOf("/Eye/image", imageIn("base_link")), "");
}

TEST_F(ToldFramesTest, peopleOfEveryFrameAreWhereTheyAre) {
  tell("/tf", framed("map", "base_link", 3.0, kLeft));
  struct Person {
    const char* frame;
    geometry_msgs::Point at;
  };
  for (const auto& [name, at] :
       {Person{"map", {2.0, 2.0, 1.0}}, Person{"base_link", {2.0, 1.0, 1.0}},
        Person{"Eye", {2.0, 1.0, 0.0}}, Person{"Front", {1.0, -1.8, 1.0}}}) {
    vision_msgs::Detection3DArray people;
    people.header.frame_id = name;
    people.detections.resize(1);
    people.detections[0].bbox.center.position = at;
    tell("/people", people);
    time.advance(boost::chrono::milliseconds(50));
    const auto records = navigation->getManager().getSensorPtr("PeoplePerception")->getData();
    ASSERT_EQ(records.size(), 1u) << name;
    ASSERT_EQ(records[0].points.size(), 1u) << name;
    const auto place = records[0].sensorTransform * records[0].points.at(0);
    EXPECT_NEAR(place.x, 2.0f, 1e-5f) << name;
    EXPECT_NEAR(place.y, 1.0f, 1e-5f) << name;
    EXPECT_NEAR(place.z, 1.0f, 1e-5f) << name;
  }
  passTwoSeconds();
  vision_msgs::Detection3DArray lost;
  lost.header.frame_id = "lost";
  EXPECT_THAT(refusalOf("/people", lost), HasSubstr("a frame that tf connects to base_link"));
}

TEST_F(ToldFramesTest, theRobotIsWhereTfHasItsRootOrElseTheFrameThatOdometryMoves) {
  tell("/odom", odometryOf("robot1/base", 1.0));
  EXPECT_FLOAT_EQ(sut->getPose().x, 1.0f);
  tell("/tf", framed("odom", "robot1/base", 2.0));
  EXPECT_FLOAT_EQ(sut->getPose().x, 2.0f);
  tell("/tf", framed("map", "odom", 5.0));
  tell("/odom", odometryOf("robot1/base", 2.5));
  EXPECT_FLOAT_EQ(sut->getPose().x, 7.0f);
  tell("/tf", framed("robot1/base", "base_link", 0.5));
  EXPECT_FLOAT_EQ(sut->getPose().x, 7.5f);
  tell("/tf", framed("earth", "map", 1000.0));
  EXPECT_FLOAT_EQ(sut->getPose().x, 7.5f);
  EXPECT_THAT(log.lines(ko::log::Level::warning), IsEmpty());
}

TEST_F(ToldFramesTest, odometryMovesTheFrameThatTheRootHangsOnOrThatHangsOnIt) {
  tell("/tf", framed("base_footprint", "base_link", 0.5));
  tell("/odom", odometryOf("base_footprint", 1.0));
  EXPECT_FLOAT_EQ(sut->getPose().x, 1.5f);
  startAgain();
  tell("/tf", framed("base_link", "base_footprint", -0.5));
  tell("/odom", odometryOf("base_footprint", 1.0));
  EXPECT_FLOAT_EQ(sut->getPose().x, 1.5f);
}

TEST_F(ToldFramesTest, aFrameMayHangOnTheRootOrOnTheFrameThatOdometryMoves) {
  const auto peopleIn = [](const std::string& frame) {
    vision_msgs::Detection3DArray people;
    people.header.frame_id = frame;
    return people;
  };
  tell("/tf", framed("odom", "base_footprint", 2.0));
  tell("/tf", framed("base_link", "laser_link", 0.2));
  tell("/odom", odometryOf("base_footprint", 2.0));
  passTwoSeconds();
  EXPECT_EQ(refusalOf("/Front/scan", scanIn("laser_link")), "");
  EXPECT_FLOAT_EQ(sut->getPose().x, 2.0f);
  startAgain();
  tell("/tf", framed("base_footprint", "cam", 0.2));
  tell("/odom", odometryOf("base_footprint", 2.0));
  passTwoSeconds();
  EXPECT_EQ(refusalOf("/people", peopleIn("cam")), "");
}

TEST_F(ToldFramesTest, saysOnceOnEachChangeThatTfDoesNotPlaceTheRobotInTheMap) {
  const auto passLong = [this] {
    passTwoSeconds();
    passTwoSeconds();
  };
  passLong();
  tell("/odom", odometryOf("robot1/base", 1.0));
  passLong();
  tell("/tf", framed("odom", "robot1/base", 2.0));
  passLong();
  tell("/tf", framed("map", "odom", 2.0));
  passLong();
  tell("/tf", framed("odom", "robot1/base", 2.5));
  startAgain();
  tell("/tf", framed("odom", "base_link", 2.5));
  startAgain();
  auto said = log.lines(ko::log::Level::info);
  std::erase_if(said,
                [](const std::string& line) { return line.find(" Test.") == std::string::npos; });
  const auto inOdometry = HasSubstr("base_link is in \"map\": the pose is in \"odom\"");
  EXPECT_THAT(
      said, ElementsAre(
                HasSubstr("neither tf nor odometry says where base_link is: the pose stays 0,0,0"),
                HasSubstr("tf does not say where base_link is: the pose is that of odometry, in "
                          "\"odom\""),
                HasSubstr("robot1/base is in \"map\": the pose is in \"odom\""),
                HasSubstr("tf says where the robot is in \"map\""), inOdometry));
}

}  // namespace
}  // namespace QV::ros2
