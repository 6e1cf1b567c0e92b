/**
 * Messages of another robot's topics, sound ones with any bytes put into them: what can't be
 * understood is refused, and what is told leaves numbers, or nothing, where sensors read.
 */
#include <array>
#include <cmath>
#include <set>
#include <span>

#include "fuzz/quiet_run.h"
#include "fuzz/sound_message.h"
#include "fuzz/value_decoder.h"
#include "platform/middleware/qv_memory_proxy.h"
#include "platform/model/model_utils.h"
#include "ros2/messages/scene_msgs.h"
#include "ros2/recording/internal/told_modules.h"
#include "tests/ros2/support/sample_messages.h"

namespace QV::fuzz {
namespace {

using namespace ros2;

sensor_msgs::LaserScan scan() {
  sensor_msgs::LaserScan scan;
  scan.header.frame_id = "laser";
  scan.angle_min = -1.5f;
  scan.angle_increment = 0.2f;
  scan.range_max = 5.0f;
  scan.ranges.assign(16, 1.0f);
  return scan;
}

sensor_msgs::Range range(float least) {
  return test::sampleRange(least, 2.0f);
}

sensor_msgs::Image image() {
  return test::sampleImage("32FC1", 4, 0x3f);
}

sensor_msgs::PointCloud2 cloud() {
  sensor_msgs::PointCloud2 cloud;
  cloud.header.frame_id = "laser";
  cloud.height = 2;
  cloud.width = 4;
  cloud.fields = {{"x", 0, 7, 1}, {"y", 4, 7, 1}, {"z", 8, 8, 1}};
  cloud.point_step = 16;
  cloud.row_step = 64;
  cloud.data.assign(128, 0x3f);
  return cloud;
}

tf2_msgs::TFMessage frames() {
  tf2_msgs::TFMessage message;
  for (const auto& [parent, child] : {std::pair("odom", "base"), std::pair("base", "laser")}) {
    auto& frame = message.transforms.emplace_back();
    frame.header.frame_id = parent;
    frame.child_frame_id = child;
    frame.transform.rotation.w = 1.0;
  }
  return message;
}

nav_msgs::Odometry odometry() {
  nav_msgs::Odometry odometry;
  odometry.child_frame_id = "foot";
  odometry.pose.pose.orientation.w = 1.0;
  return odometry;
}

vision_msgs::Detection3DArray people() {
  vision_msgs::Detection3DArray people;
  people.header.frame_id = "laser";
  people.detections.resize(1);
  people.detections[0].bbox.center.position = {1.0, 2.0, 0.5};
  return people;
}

const std::array<Sound, 9>& topics() {
  static const std::array<Sound, 9> sounds = {
      sound(scan()),      sound(range(0.1f)),
      sound(range(4.0f)), sound(image()),
      sound(cloud()),     sound(frames()),
      sound(odometry()),  sound(sensor_msgs::JointState{{}, {"joint"}, {1.0}, {}, {}}),
      sound(people())};
  return sounds;
}

std::string nameOf(std::size_t topic) {
  return "/topic" + std::to_string(topic);
}

ToldSensor sensorOf(ToldSort sort, std::size_t topic, std::size_t beams) {
  ToldSensor sensor;
  sensor.sort = sort;
  sensor.name = "sensor" + std::to_string(topic);
  sensor.topic = nameOf(topic);
  sensor.minRange = 0.1f;
  sensor.maxRange = 5.0f;
  sensor.aperture = 1.0f;
  sensor.verticalAperture = 1.0f;
  sensor.beams = beams;
  // The others have to be where tf says.
  if (sort == ToldSort::range) sensor.frame = "sonar";
  if (sort == ToldSort::depth) sensor.frame = "camera";
  return sensor;
}

TopicSurvey surveyOfAll() {
  TopicSurvey survey;
  const std::array sorts = {ToldSort::scan, ToldSort::range, ToldSort::contact, ToldSort::depth,
                            ToldSort::cloud};
  for (std::size_t i = 0; i < sorts.size(); ++i) {
    const bool isFan = sorts[i] == ToldSort::scan || sorts[i] == ToldSort::cloud;
    survey.sensors[nameOf(i)] = sensorOf(sorts[i], i, isFan ? 16 : 0);
  }
  survey.base = "base";
  survey.odometryTopic = nameOf(6);
  return survey;
}

void checkKeys(const ToldModules& modules, const std::string& sensor) {
  const QVMemoryProxy memory(modules.getBroker());
  for (const std::string& key : modules.getModel().sensorConfigs.at(sensor).memoryKeys) {
    const QVValue value = memory.getData(key);
    check(!value.isFloat() || std::isfinite(value.toFloat()), "a key holds no number");
  }
}

/** Made anew now and then, as frames and poses stay. */
ToldModules& robot() {
  constexpr int kInputs = 1024;
  // The kinds are made first, so that they outlive the robot.
  static const Model::SensorKinds& kinds = Model::SensorKinds::standard();
  static const TopicSurvey survey = surveyOfAll();
  static const std::string description = describe(survey);
  static std::unique_ptr<ToldModules> modules;
  static int inputs = 0;
  if (inputs++ % kInputs == 0)
    modules = std::make_unique<ToldModules>(
        description, survey, [](const auto&) { return ko::Clock::now(); }, "F", kinds);
  return *modules;
}

/** Calls `use` with each message of an input. */
template <typename Use>
void forEachMessage(std::span<const std::uint8_t> input, const Use& use) {
  const auto* byte = input.data();
  const auto* const end = byte + input.size();
  const auto next = [&] { return byte < end ? *byte++ : std::uint8_t{0}; };
  for (int messages = 0; messages < kMostMessages && byte < end; ++messages) {
    const std::size_t topic = next() % topics().size();
    const Bytes cdr = changed(topics()[topic].cdr, next);
    const std::string name = nameOf(topic);
    use(ToldMessage{name, topics()[topic].type->getName(), cdr});
  }
}

void tellRobot(std::span<const std::uint8_t> input) {
  ToldModules& modules = robot();
  std::set<std::string> told;
  forEachMessage(input, [&](const ToldMessage& message) {
    modules.tell(message);
    // What a robot refuses or says only after seconds comes up, too.
    quietTime().advance(boost::chrono::milliseconds(300));
    told.insert(message.topic);
  });
  for (const auto& [topic, sensor] : modules.getSurvey().sensors) {
    if (told.count(topic) == 0) continue;
    checkKeys(modules, sensor.name);
    modules.forget(topic);
  }
  const Math::Pose2D pose = modules.getPose();
  check(std::isfinite(pose.x + pose.y + pose.theta), "the robot is nowhere");
}

void describeRobot(std::span<const std::uint8_t> input) {
  TopicSurveyor surveyor;
  for (std::size_t i = 0; i < topics().size(); ++i)
    surveyor.expect(nameOf(i), topics()[i].type->getName());
  forEachMessage(input, [&](const ToldMessage& message) { surveyor.take(message); });
  try {
    Model::ModelUtils::robotFromXml(describe(surveyor.make()));
  } catch (const std::runtime_error& error) {
    check(std::string(error.what()).starts_with("a topic of"), error.what());
  }
}

}  // namespace
}  // namespace QV::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const auto read = [](const std::uint8_t* first, std::size_t count) {
    QV::fuzz::tellRobot({first, count});
    // To describe a robot takes longer than to tell it something.
    if (QV::fuzz::isOneOf(64, first, count)) QV::fuzz::describeRobot({first, count});
  };
  return QV::fuzz::runQuietly(read, data, size);
}
