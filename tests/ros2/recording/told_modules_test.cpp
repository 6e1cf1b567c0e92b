#include "ros2/recording/internal/told_modules.h"

#include <cmath>
#include <cstring>
#include <limits>
#include <numbers>

#include <boost/make_shared.hpp>
#include <gmock/gmock.h>

#include "platform/ko/simulated_time.h"
#include "platform/model/description_faults.h"
#include "platform/model/model_utils.h"
#include "ros2/messages/scene_msgs.h"
#include "ros2/recording/internal/cloud_points.h"
#include "sensor/hosting/navigation_module.h"
#include "tests/ros2/support/sample_messages.h"
#include "tests/support/log_capture.h"

namespace QV::ros2 {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr float kNaN = std::numeric_limits<float>::quiet_NaN();

sensor_msgs::LaserScan scan(std::size_t beams = 5) {
  sensor_msgs::LaserScan scan;
  scan.header.frame_id = "laser";
  scan.angle_min = -1.0f;
  scan.angle_increment = 0.5f;
  scan.range_min = 0.1f;
  scan.range_max = 5.0f;
  scan.ranges.assign(beams, 2.0f);
  return scan;
}

sensor_msgs::Range range(float value) {
  return test::sampleRange(0.2f, value);
}

sensor_msgs::Image image() {
  return test::sampleImage("16UC1", 2, 4);
}

sensor_msgs::PointCloud2 cloud(const std::string& frame) {
  sensor_msgs::PointCloud2 cloud;
  cloud.header.frame_id = frame;
  cloud.height = 1;
  cloud.width = 2;
  cloud.fields = {{"x", 0, 7, 1}, {"y", 4, 7, 1}, {"z", 8, 7, 1}};
  cloud.point_step = 12;
  cloud.data.assign(24, 0);
  return cloud;
}

tf2_msgs::TFMessage frame(const std::string& parent, const std::string& child, double w = 1.0) {
  tf2_msgs::TFMessage message;
  auto& frame = message.transforms.emplace_back();
  frame.header.frame_id = parent;
  frame.child_frame_id = child;
  frame.transform.rotation.w = w;
  return message;
}

nav_msgs::Odometry odometry(double x, double w = 1.0) {
  nav_msgs::Odometry odometry;
  odometry.child_frame_id = "base_link";
  odometry.pose.pose.position.x = x;
  odometry.pose.pose.orientation.w = w;
  return odometry;
}

/** Changes a message. */
template <typename Message, typename Change>
Message with(Message message, const Change& change) {
  change(message);
  return message;
}

/** A message of a topic, whatever its type. */
struct Told {
  template <typename Message>
  Told(const std::string& topic, const Message& message)
      : topic(topic), type(Message::getType().getName()), cdr(toCdr(message)) {}

  std::string topic;
  std::string type;
  Bytes cdr;
};

std::vector<Told> soundMessages() {
  return {{"/scan", scan()},        {"/sonar", range(1.0f)},
          {"/depth", image()},      {"/cloud", cloud("laser")},
          {"/odom", odometry(1.0)}, {"/tf", frame("base_link", "laser")}};
}

TopicSurvey survey() {
  TopicSurveyor surveyor;
  for (const Told& told : soundMessages()) surveyor.expect(told.topic, told.type);
  for (const Told& told : soundMessages()) surveyor.take({told.topic, told.type, told.cdr});
  sensor_msgs::CameraInfo info;
  info.header.frame_id = "camera";
  info.width = 4;
  // The first one says nothing.
  for (const double focus : {std::numeric_limits<double>::quiet_NaN(), 2.0}) {
    info.k[0] = focus;
    const Told told("/depth_info", info);
    surveyor.take({told.topic, told.type, told.cdr});
  }
  return surveyor.make();
}

struct ToldModulesTest : testing::Test {
  ToldModulesTest() { navigation.getManager().subscribe("test"); }

  void tell(const Told& told) { sut.tell({told.topic, told.type, told.cdr}); }

  std::vector<Math::MetricalData> recordsOf(const std::string& sensor) {
    return navigation.getManager().getSensorPtr(sensor)->getData();
  }

  std::vector<std::string> linesOf(const std::string& topic) const {
    std::vector<std::string> lines;
    for (const std::string& line : log.lines(ko::log::Level::info))
      if (line.find(" Test.tell: " + topic) != std::string::npos) lines.push_back(line);
    return lines;
  }

  test::LogCapture log;
  ko::SimulatedTime time;
  const TopicSurvey surveyed = survey();
  ToldModules sut{describe(surveyed), surveyed, [](const auto&) { return ko::Clock::now(); },
                  "Test"};
  sensor::NavigationModule navigation{sut.getBroker()};
};

TEST_F(ToldModulesTest, aSensorWithoutMessagesHasNoRecord) {
  time.advance(boost::chrono::seconds(1));
  for (const char* const sensor : {"scan", "sonar", "depth", "cloud"})
    EXPECT_THAT(recordsOf(sensor), IsEmpty()) << sensor;
  tell({"/scan", scan()});
  tell({"/sonar", range(1.0f)});
  ASSERT_EQ(recordsOf("scan").size(), 1u);
  EXPECT_EQ(recordsOf("scan")[0].points.size(), 5u);
  EXPECT_EQ(recordsOf("scan")[0].timestamp, ko::Clock::now());
  ASSERT_EQ(recordsOf("sonar").size(), 1u);
  sut.forget("/scan");
  sut.forget("/sonar");
  EXPECT_THAT(recordsOf("scan"), IsEmpty());
  EXPECT_THAT(recordsOf("sonar"), IsEmpty());
}

TEST_F(ToldModulesTest, aScanWithMoreBeamsThanKeysKeepsTheNearestOfEachGroup) {
  auto message = scan(10);
  message.angle_increment = 2.0f / 9.0f;
  message.ranges[3] = 0.7f;
  message.ranges[9] = -std::numeric_limits<float>::infinity();
  tell({"/scan", message});
  const auto points = recordsOf("scan").at(0).points;
  ASSERT_EQ(points.size(), 5u);
  EXPECT_NEAR(Math::norm(points[4]), message.range_min, 1e-5f);
  EXPECT_NEAR(Math::norm(points[1]), 0.7f, 1e-5f);
  EXPECT_NEAR(std::atan2(points[1].y, points[1].x), -1.0f + 3 * 2.0f / 9.0f, 1e-5f);

  tell({"/scan", scan(3)});
  EXPECT_EQ(recordsOf("scan").at(0).points.size(), 5u);
}

TEST_F(ToldModulesTest, aBadMessageIsLoggedOnceAndOtherTopicsGoOn) {
  struct Bad {
    Told told;
    std::string expected;
  };
  using Scan = sensor_msgs::LaserScan;
  using Image = sensor_msgs::Image;
  using Cloud = sensor_msgs::PointCloud2;
  const Bad table[] = {
      {{"/scan", scan(0)}, "1 to 10000 ranges expected, 0 given"},
      {{"/scan", scan(10'001)}, "1 to 10000 ranges expected, 10001 given"},
      {{"/scan", with(scan(), [](Scan& m) { m.ranges.assign(5, kNaN); })},
       "ranges expected, only NaN given"},
      {{"/scan", with(scan(), [](Scan& m) { m.angle_increment = kNaN; })},
       "beams at different angles"},
      {{"/scan", with(scan(), [](Scan& m) { m.header.frame_id = "other"; })},
       "frame laser expected, \"other\" given"},
      {{"/scan", std_msgs::String{"no scan"}}, "sensor_msgs/msg/LaserScan"},
      {{"/sonar", range(kNaN)}, "a range expected, NaN given"},
      {{"/depth", with(image(), [](Image& m) { m.data.pop_back(); })}, "of its size expected"},
      {{"/depth", with(image(), [](Image& m) { m.encoding = "rgb8"; })}, "depth image"},
      {{"/cloud", with(cloud("laser"), [](Cloud& m) { m.width = 3; })},
       "1 rows of 3 points of 12 bytes expected, 24 bytes given"},
      {{"/cloud", with(cloud("laser"), [](Cloud& m) { m.point_step = 0; })}, "points of 0 bytes"},
      {{"/cloud", cloud("nowhere")}, "a frame that tf connects to base_link expected"},
      {{"/odom", odometry(kNaN)}, "a position within 1e8 m expected"},
      {{"/odom", odometry(1.0, 0.0)}, "a rotation of length 1 expected, 0.000000 given"},
      {{"/tf", frame("base_link", "laser", 0.0)}, "frame laser: a rotation of length 1"},
      {{"/tf", frame("laser", "base_link")}, "frame base_link: a tree of frames expected, a loop"},
      {{"/tf", frame("laser", "laser")}, "a loop through laser given"},
      {{"/tf", frame("", "laser")}, "frames with names expected"},
      {{"/tf", frame("laser", std::string(300, 'x'))}, "names of frames of up to 256 letters"}};
  for (const Bad& bad : table) {
    for (int i = 0; i < 3; ++i) tell(bad.told);
    EXPECT_THAT(linesOf(bad.told.topic), ElementsAre(HasSubstr("refused: "))) << bad.expected;
    EXPECT_THAT(linesOf(bad.told.topic), Contains(HasSubstr(bad.expected)));
    for (int i = 0; i < 10; ++i) {
      EXPECT_THAT(linesOf(bad.told.topic), testing::SizeIs(1)) << bad.expected;
      for (const Told& sound : soundMessages()) tell(sound);
    }
    EXPECT_THAT(linesOf(bad.told.topic),
                ElementsAre(HasSubstr("refused"), HasSubstr("valid again")))
        << bad.expected;
    EXPECT_THAT(recordsOf("scan"), testing::SizeIs(1)) << bad.expected;
    EXPECT_FLOAT_EQ(sut.getPose().x, 1.0f);
    log.clear();
  }
}

TEST_F(ToldModulesTest, aDepthSensorHasTheApertureOfItsCameraAndMillimetres) {
  EXPECT_FLOAT_EQ(surveyed.sensors.at("/depth").aperture, 0.5f * std::numbers::pi_v<float>);
  auto metres = test::sampleImage("32FC1", sizeof(float), 0);
  const float pixels[] = {0.5f, 8.1236f, kNaN, -1.0f, 70.0f};
  std::memcpy(metres.data.data(), pixels, sizeof pixels);
  const cv::Mat_<std::uint16_t> depth = depthOf(metres);
  EXPECT_THAT(std::vector<int>(depth.begin(), depth.begin() + 5), ElementsAre(500, 8124, 0, 0, 0));
}

TEST(TopicSurveyor, countsADepthCameraOnceThatPublishesItsPointsToo) {
  const Told told[] = {{"/front/image", image()},
                       {"/front/points", cloud("front")},
                       {"/registered", cloud("camera")},
                       {"/top/points", cloud("top")},
                       {"/image", image()},
                       {"/points", cloud("top")}};
  TopicSurveyor surveyor;
  for (const auto& [topic, type, cdr] : told) {
    surveyor.expect(topic, type);
    surveyor.take({topic, type, cdr});
  }
  std::vector<std::string> topics;
  for (const auto& [topic, sensor] : surveyor.make().sensors) topics.push_back(topic);
  EXPECT_THAT(topics, ElementsAre("/front/image", "/image", "/points", "/top/points"));
}

TEST(TopicSurveyor, takesFramesOfAnyNameThatADescriptionCanHold) {
  const std::string odd = "\r\n<\"&\1\xff";
  TopicSurveyor surveyor;
  for (const std::string& frame : {std::string(1, '\0'), odd}) {
    auto message = scan();
    message.header.frame_id = frame;
    const Told told("/scan", message);
    surveyor.expect(told.topic, told.type);
    surveyor.take({told.topic, told.type, told.cdr});
  }
  const auto robot = Model::ModelUtils::robotFromXml(describe(surveyor.make()));
  EXPECT_EQ(robot.sensorConfigs.at("scan").properties.at("frame"), odd);
  EXPECT_EQ(robot.rootLink, odd);
}

TEST(TopicSurveyor, namesTheSensorsThatTfDoesNotPlace) {
  const test::LogCapture log;
  const TopicSurvey surveyed = survey();
  EXPECT_THAT(log.lines(ko::log::Level::warning),
              ElementsAre(HasSubstr("to \"base_link\", they are mounted at 0,0,0: "
                                    "depth (\"camera\"), sonar (\"sonar\")")));
  EXPECT_EQ(surveyed.sensors.at("/sonar").mounting, Math::Transform());
}

// Saved, it is read as the derived one, clouds and pose too.
TEST(TopicSurveyor, describesTopicsSoThatTheDescriptionNamesThem) {
  TopicSurvey derived = survey();
  std::string xml = describe(derived);
  const auto robot = Model::ModelUtils::robotFromXml(xml);
  const auto& kinds = Model::SensorKinds::standard();
  const TopicSurvey saved = surveyDescription(robot, kinds);
  EXPECT_EQ(saved.base, "base_link");
  ASSERT_EQ(saved.sensors.size(), derived.sensors.size());
  for (const auto& [topic, sensor] : derived.sensors) {
    const ToldSensor& same = saved.sensors.at(topic);
    EXPECT_TRUE(same.sort == sensor.sort && same.frame == sensor.frame) << topic;
    EXPECT_EQ(same.beams, sensor.beams) << topic;
  }
  EXPECT_THAT(Model::findDescriptionFaults(robot, kinds), IsEmpty());
  xml.replace(xml.find("sensor_msgs/msg/PointCloud2"), 15, "his");
  EXPECT_THAT([&] { surveyDescription(Model::ModelUtils::robotFromXml(xml), kinds); },
              testing::ThrowsMessage<std::runtime_error>(
                  HasSubstr("sensor_msgs/msg/PointCloud2 expected, \"his/PointCloud2\" given")));
  // Names that would make a loop of frames, and one that ends a text.
  for (const char* const base : {"", "map", "odom", "scan", "depth_optical"}) {
    derived.base = base;
    EXPECT_EQ(Model::ModelUtils::robotFromXml(describe(derived)).rootLink, "body") << base;
  }
  derived.base = std::string("a\0b", 3);
  EXPECT_EQ(Model::ModelUtils::robotFromXml(describe(derived)).rootLink, "body");
}

TEST_F(ToldModulesTest, rangesOfHumbleAreUnderstood) {
  Bytes cdr;
  const auto message = range(1.25f);
  sensor_msgs::Range::getTypeWithoutVariance().encode(&message, cdr);
  sut.tell({"/sonar", sensor_msgs::Range::getType().getName(), cdr});
  EXPECT_NEAR(Math::norm(recordsOf("sonar").at(0).points.at(7)), 1.25f, 1e-5f);
}

TEST_F(ToldModulesTest, validTransformsOfAMessageAreUsedBesideInvalidOnes) {
  auto frames = frame("odom", "base_link");
  frames.transforms[0].transform.translation.x = 3.0;
  frames.transforms.insert(frames.transforms.begin(), frame("laser", "laser").transforms[0]);
  tell({"/tf", frames});
  EXPECT_FLOAT_EQ(sut.getPose().x, 3.0f);
}

// Whoever makes up names for ever does not fill the memory.
TEST_F(ToldModulesTest, framesAndSensorsAreNoMoreThanARobotHas) {
  log.clear();
  FrameTree frames;
  const auto add = [&](int i) { frames.add(frame("odom", "frame" + std::to_string(i))); };
  for (int i = 0; i < 10'000; ++i) add(i);
  EXPECT_THAT([&] { add(10'000); },
              testing::ThrowsMessage<std::runtime_error>(
                  "frame frame10000: up to 10000 frames expected, more given"));
  add(9'999);

  TopicSurveyor surveyor;
  for (int i = 0; i < 1'002; ++i) {
    const Told told(std::string("/").append(std::to_string(i)), range(1.0f));
    surveyor.expect(told.topic, told.type);
    surveyor.take({told.topic, told.type, told.cdr});
  }
  EXPECT_TRUE(surveyor.isComplete());
  EXPECT_EQ(surveyor.make().sensors.size(), 1'000u);
  EXPECT_THAT(log.lines(ko::log::Level::warning),
              ElementsAre(HasSubstr("more than 1000 topics make sensors: /1000 ")));
}

}  // namespace
}  // namespace QV::ros2
