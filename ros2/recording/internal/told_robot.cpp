#include "ros2/recording/internal/told_robot.h"

#include <algorithm>
#include <cmath>
#include <exception>
#include <filesystem>
#include <iterator>
#include <stdexcept>

#include <boost/make_shared.hpp>

#include "platform/ko/log.h"
#include "platform/model/model_utils.h"
#include "platform/model/sensor_properties.h"
#include "platform/vision/qv_image.h"
#include "robot/services/internal/input_listener.h"
#include "robot/services/internal/robot_model_service.h"
#include "ros2/messages/scene_msgs.h"
#include "ros2/recording/internal/cloud_points.h"
#include "ros2/recording/internal/conversions.h"
#include "session/internal/run_listener.h"

namespace QV::ros2 {
namespace {

constexpr std::uint64_t kLongGap = 60'000'000'000;
constexpr ko::Duration kShortGap{1'000'000'000};
// What is beyond the maximum is no echo to any sensor.
constexpr float kBeyond = 1.0f;

}  // namespace

ToldRobot::ToldRobot(const std::string& path, const TopicSurvey& surveyed)
    : title("Recording " + std::filesystem::path(path).filename().string()),
      bag(std::make_unique<BagReader>(path)),
      survey(surveyed),
      description(describe(survey)),
      model(Model::ModelUtils::robotFromXml(description)),
      memory(boost::make_shared<robot::MemoryService>(broker)),
      devices(boost::make_shared<robot::DeviceManager>(broker)),
      motion(boost::make_shared<robot::MotionService>(model)),
      cameras(boost::make_shared<robot::VideoDevice>()),
      start(ko::Clock::now()),
      due(start) {
  xAddModules();
  xAddCameras();
  for (const auto& [topic, sensor] : survey.sensors) xWriteDefaults(sensor);
  navigation = boost::make_shared<sensor::NavigationModule>(broker);
  hosting.emplace(broker, navigation);
}

// Who still holds the modules gets no images any more.
ToldRobot::~ToldRobot() {
  for (std::size_t i = 0; i < images.size(); ++i)
    cameras->removeCamera(kDepthCamera + static_cast<int>(i));
}

void ToldRobot::xAddModules() {
  broker->registerModule(memory);
  broker->registerModule(devices);
  broker->registerModule(motion);
  broker->registerModule(cameras);
  broker->registerModule(boost::make_shared<robot::RobotModelService>(description));
}

void ToldRobot::xAddCameras() {
  int index = kDepthCamera;
  for (const auto& [topic, sensor] : survey.sensors) {
    if (sensor.sort != ToldSort::depth) continue;
    images[sensor.name] = {};
    const auto show = [this, name = sensor.name](auto& depth, auto& time) {
      Seen& seen = images[name];
      depth = seen.depth;
      if (seen.depth.empty()) return;
      time = seen.time;
      if (!seen.isShown) news.insert(name);
      seen.isShown = true;
    };
    cameras->addCamera({index++, sensor.name, 1, sensor.aperture, sensor.verticalAperture, show});
  }
}

// Sensors can't start before the memory has what they read.
void ToldRobot::xWriteDefaults(const ToldSensor& sensor) {
  if (sensor.sort == ToldSort::depth) return;
  if (sensor.beams == 0) {
    const bool isContact = sensor.sort == ToldSort::contact;
    return memory->insertData(keyOf(sensor, "range"), isContact ? 0.0f : sensor.maxRange + kBeyond);
  }
  for (std::size_t i = 0; i < sensor.beams; ++i) xTellBeam(sensor, i, sensor.maxRange, 0.0f);
  xTellTime(sensor);
  modes.push_back(std::make_unique<robot::LaserModeActuator>(
      broker, devices, keyOf(sensor, "set_mode"), keyOf(sensor, "mode"), ko::Duration::zero()));
}

void ToldRobot::xReadNext() const {
  while (!upcoming) {
    upcoming = bag->next();
    if (!upcoming) return;
    const BagTopic& topic = *upcoming->topic;
    const bool says = survey.sensors.count(topic.name) > 0 || topic.name == survey.odometryTopic ||
                      isOf<tf2_msgs::TFMessage>(topic);
    if (!says) upcoming.reset();
  }
  due = xTimeOf(upcoming->logTime);
}

ko::Clock::time_point ToldRobot::xTimeOf(std::uint64_t logTime) const {
  const std::uint64_t gap = logTime - std::min(lastLogTime.value_or(logTime), logTime);
  if (lastLogTime == logTime) return due;
  lastLogTime = logTime;
  if (gap > kLongGap) {
    ko::log::warning("Recording", "play")
        << "a gap of " << gap / 1'000'000'000 << " s is taken for a second";
    return due + kShortGap;
  }
  return due + ko::Duration(static_cast<std::int64_t>(gap));
}

std::optional<ko::Clock::time_point> ToldRobot::getNextStep() const {
  if (!upcoming) xReadNext();
  if (!upcoming) return std::nullopt;
  return due;
}

void ToldRobot::makeStep() {
  if (!isAmid) news.clear();
  if (!getNextStep()) return;
  const auto now = due;
  const bool tells = survey.sensors.count(upcoming->topic->name) > 0;
  try {
    xTell(*upcoming);
  } catch (const std::exception& error) {
    if (refused.insert(upcoming->topic->name).second)
      ko::log::warning("Recording", "play") << upcoming->topic->name << ": " << error.what();
  }
  upcoming.reset();
  // What comes at the same time is one step.
  isAmid = (isAmid || !tells || getNextStep()) && getNextStep() && (!tells || due == now);
}

void ToldRobot::xTell(const BagMessage& message) {
  const auto sensor = survey.sensors.find(message.topic->name);
  if (sensor != survey.sensors.end()) {
    xTell(sensor->second, message);
    told.insert(sensor->second.name);
    if (sensor->second.sort != ToldSort::depth) news.insert(sensor->second.name);
  } else {
    xTellPlace(message);
  }
  if (listener) listener->onStep({pose, pose, motion->getRobotVelocity()});
}

void ToldRobot::xTell(const ToldSensor& sensor, const BagMessage& message) {
  switch (sensor.sort) {
    case ToldSort::scan:
      return xTellScan(sensor, fromCdr<sensor_msgs::LaserScan>(message.data));
    case ToldSort::range:
    case ToldSort::contact:
      return xTellRange(sensor, fromCdr<sensor_msgs::Range>(message.data));
    case ToldSort::depth:
      return xTellImage(sensor, fromCdr<sensor_msgs::Image>(message.data));
    case ToldSort::cloud:
      return xTellCloud(sensor, fromCdr<sensor_msgs::PointCloud2>(message.data));
  }
}

// A range that is none, as 0 often is, has met nothing.
void ToldRobot::xTellBeam(const ToldSensor& sensor, std::size_t beam, float range, float angle) {
  const bool isSound = range >= sensor.minRange && range < sensor.maxRange;
  const float told = isSound ? range : sensor.maxRange + kBeyond;
  const std::string number = std::to_string(beam);
  memory->insertData(keyOf(sensor, number + "/X"), told * std::cos(angle));
  memory->insertData(keyOf(sensor, number + "/Y"), told * std::sin(angle));
}

void ToldRobot::xTellTime(const ToldSensor& sensor) {
  memory->insertData(keyOf(sensor, "time"), ko::Clock::toInt32ms(ko::Clock::now()));
}

void ToldRobot::xTellScan(const ToldSensor& sensor, const sensor_msgs::LaserScan& scan) {
  for (std::size_t i = 0; i < sensor.beams; ++i) {
    const float angle = scan.angle_min + scan.angle_increment * static_cast<float>(i);
    xTellBeam(sensor, i, i < scan.ranges.size() ? scan.ranges[i] : sensor.maxRange,
              angle - sensor.middle);
  }
  xTellTime(sensor);
}

void ToldRobot::xTellRange(const ToldSensor& sensor, const sensor_msgs::Range& message) {
  const float range = message.range;
  if (sensor.sort == ToldSort::contact) {
    const bool isThere = range <= sensor.maxRange;
    return memory->insertData(keyOf(sensor, "range"), isThere ? 1.0f : 0.0f);
  }
  const bool isEcho = range < sensor.maxRange;
  memory->insertData(keyOf(sensor, "range"),
                     isEcho ? std::max(range, 0.0f) : sensor.maxRange + kBeyond);
}

void ToldRobot::xTellImage(const ToldSensor& sensor, const sensor_msgs::Image& image) {
  images[sensor.name] = {depthOf(image), ko::Clock::now(), false};
}

void ToldRobot::xTellCloud(const ToldSensor& sensor, const sensor_msgs::PointCloud2& cloud) {
  const auto placed = survey.frames.find(withoutSlash(cloud.header.frame_id), survey.base);
  // A sensor on the floor is one whose height nobody told.
  constexpr float kLowest = 0.05f;
  const bool knowsFloor = placed && Math::position3DFromTransform(*placed).z > kLowest;
  std::vector<float> nearest(sensor.beams, sensor.maxRange);
  const auto beams = static_cast<float>(sensor.beams);
  for (const Math::Position3D& point : pointsOf(cloud)) {
    const Math::Position3D at = placed.value_or(Math::Transform()) * point;
    if (!isObstacle(at, knowsFloor)) continue;
    const float turn = std::atan2(at.y, at.x) / kFullTurn + 0.5f;
    const auto beam = std::min(static_cast<std::size_t>(turn * beams), sensor.beams - 1);
    nearest[beam] = std::min(nearest[beam], std::hypot(at.x, at.y));
  }
  for (std::size_t i = 0; i < sensor.beams; ++i) {
    const float angle = ((static_cast<float>(i) + 0.5f) / beams - 0.5f) * kFullTurn;
    xTellBeam(sensor, i, nearest[i], angle);
  }
  xTellTime(sensor);
}

void ToldRobot::xTellPlace(const BagMessage& message) {
  if (message.topic->name == survey.odometryTopic) {
    const auto odometry = fromCdr<nav_msgs::Odometry>(message.data);
    const auto& [linear, angular] = odometry.twist.twist;
    motion->setRobotVelocity({static_cast<float>(linear.x), static_cast<float>(linear.y),
                              static_cast<float>(angular.z)});
    if (!survey.frames.has(survey.base)) pose = poseOf(odometry.pose.pose);
    return;
  }
  survey.frames.add(fromCdr<tf2_msgs::TFMessage>(message.data));
  const auto placed = survey.frames.find(survey.base, survey.frames.rootOf(survey.base));
  if (placed) pose = Math::pose2DFromTransform(*placed);
}

std::vector<Math::MetricalData> ToldRobot::getRecords() {
  std::vector<Math::MetricalData> records;
  const auto& manager = navigation->getManager();
  for (const std::string& name : manager.getSensorList()) {
    if (told.count(name) == 0) continue;
    std::ranges::move(manager.getSensorPtr(name)->getData(), std::back_inserter(records));
  }
  return records;
}

void ToldRobot::setListener(session::RunListener* newListener) {
  listener = newListener;
  memory->setListener(newListener);
  cameras->setListener(newListener);
  if (listener) listener->onStep({pose, pose, motion->getRobotVelocity()});
}

}  // namespace QV::ros2
