#include "ros2/recording/internal/told_modules.h"

#include <exception>
#include <utility>

#include <boost/make_shared.hpp>

#include "platform/middleware/contracts/navigation_contract.h"
#include "platform/model/model_utils.h"
#include "platform/model/sensor_properties.h"
#include "platform/vision/qv_image.h"
#include "robot/services/internal/robot_model_service.h"
#include "ros2/messages/scene_msgs.h"
#include "ros2/recording/internal/message_checks.h"
#include "ros2/recording/internal/sensor_sorts.h"

namespace QV::ros2 {
namespace {

// The values of a laser that looks down: its points are floor, and there is no error.
constexpr float kNoInclinationError = 0.0f;
constexpr float kStatusOfFloor = 2.0f;

}  // namespace

ToldModules::ToldModules(const std::string& description, TopicSurvey surveyed, Dating dating,
                         const std::string& category, const Model::SensorKinds& kinds)
    : survey(std::move(surveyed)),
      frames(survey.frames, survey.base, survey.map, category),
      dating(std::move(dating)),
      model(Model::ModelUtils::robotFromXml(description, kinds)),
      memory(boost::make_shared<robot::MemoryService>(broker)),
      devices(boost::make_shared<robot::DeviceManager>(broker)),
      motion(boost::make_shared<robot::MotionService>(model)),
      cameras(boost::make_shared<robot::VideoDevice>()),
      refusals(category) {
  xAddModules(description);
  xAddCameras();
  for (const auto& [topic, sensor] : survey.sensors) xForget(sensor);
  // A laser takes its mode at once: the real robot decides whether it runs.
  modes = robot::makeLaserModes(broker, devices, model);
}

// The cameras are removed, so that remaining holders of the modules get no more images.
ToldModules::~ToldModules() {
  frames.finish();
  const auto count = static_cast<int>(camerasOf(model).size());
  for (int index = kDepthCamera; index < kDepthCamera + count; ++index)
    cameras->removeCamera(index);
}

// A sonar driver without a source measures nothing; it only answers subscriptions.
void ToldModules::xAddModules(const std::string& description) {
  broker->registerModule(memory);
  broker->registerModule(devices);
  broker->registerModule(motion);
  broker->registerModule(cameras);
  broker->registerModule(boost::make_shared<robot::SonarDriver>(broker, model));
  broker->registerModule(boost::make_shared<robot::RobotModelService>(description));
}

void ToldModules::xAddCameras() {
  int index = kDepthCamera;
  for (const auto* config : camerasOf(model)) {
    const Model::SensorProperties properties(*config);
    const auto show = [this, name = config->name](auto& depth, auto& time) {
      xShowImage(name, depth, time);
    };
    cameras->addCamera({index++, peopleFrameOf(*config), properties.getInteger("modelCode"),
                        properties.getAngle("horizontalAngularRange"),
                        properties.getAngle("verticalAngularRange"), show});
  }
}

void ToldModules::xShowImage(const std::string& sensor, cv::Mat_<std::uint16_t>& depth,
                             ko::Clock::time_point& time) {
  const std::lock_guard lock(mutex);
  Seen& seen = images[sensor];
  depth = seen.depth;
  if (seen.depth.empty()) return;
  time = seen.time;
  if (!seen.isShown) news.insert(sensor);
  seen.isShown = true;
}

const Model::SensorConfig& ToldModules::xConfigOf(const ToldSensor& sensor) const {
  return model.sensorConfigs.at(sensor.name);
}

bool ToldModules::wantsPeople() const {
  return memory->hasSubscribers(NavigationContract::kPeopleDetectedEvent);
}

bool ToldModules::isNew(const std::string& sensor) const {
  const std::lock_guard lock(mutex);
  return news.count(sensor) > 0;
}

void ToldModules::clearNews() {
  const std::lock_guard lock(mutex);
  news.clear();
}

// A value that is no number gives no record.
void ToldModules::xForget(const ToldSensor& sensor) {
  const Model::SensorConfig& config = xConfigOf(sensor);
  if (sensor.sort == ToldSort::touch) return xRaiseTouch(sensor, false);
  if (sensor.sort == ToldSort::depth) {
    const std::lock_guard lock(mutex);
    images[sensor.name] = {};
    return;
  }
  for (const std::string& key : config.memoryKeys) memory->insertData(key, QVValue());
  if (sensor.beams == 0) return;
  xWriteTime(sensor, ko::Clock::now());
  const Model::SensorProperties properties(config);
  if (properties.has("inclination"))
    memory->insertData(properties.getText("inclination"), kNoInclinationError);
  if (properties.has("status")) memory->insertData(properties.getText("status"), kStatusOfFloor);
}

void ToldModules::forget(const std::string& topic) {
  const auto sensor = survey.sensors.find(topic);
  if (sensor != survey.sensors.end()) xForget(sensor->second);
}

bool ToldModules::hears(const std::string& topic, const std::string& type) const {
  return survey.sensors.count(topic) > 0 || topic == survey.odometryTopic ||
         isOf<tf2_msgs::TFMessage>(type) || isOf<sensor_msgs::JointState>(type) ||
         isOf<vision_msgs::Detection3DArray>(type);
}

void ToldModules::tell(const ToldMessage& message) {
  try {
    xTell(message);
    refusals.accept(message.topic);
  } catch (const std::exception& error) {
    refusals.refuse(message.topic, error.what());
  }
  frames.look();
  if (listener) listener->onStep({getPose(), getPose(), motion->getRobotVelocity()});
}

void ToldModules::xTell(const ToldMessage& message) {
  const auto& [topic, type, cdr] = message;
  const auto sensor = survey.sensors.find(topic);
  if (sensor != survey.sensors.end()) {
    xTell(sensor->second, cdr);
  } else if (isOf<nav_msgs::Odometry>(type)) {
    xTellOdometry(cdr);
  } else if (isOf<tf2_msgs::TFMessage>(type)) {
    frames.add(fromCdr<tf2_msgs::TFMessage>(cdr));
  } else if (isOf<sensor_msgs::JointState>(type)) {
    xTellJoints(cdr);
  } else if (isOf<vision_msgs::Detection3DArray>(type)) {
    xTellPeople(cdr);
  }
}

void ToldModules::xTell(ToldSensor& sensor, BytesView cdr) {
  switch (sensor.sort) {
    case ToldSort::scan:
      xTellScan(sensor, fromCdr<sensor_msgs::LaserScan>(cdr));
      break;
    case ToldSort::range:
    case ToldSort::contact:
    case ToldSort::touch:
      xTellRange(sensor, rangeFromCdr(cdr));
      break;
    case ToldSort::depth:
      return xTellImage(sensor, fromCdr<sensor_msgs::Image>(cdr));
    case ToldSort::cloud:
      xTellCloud(sensor, fromCdr<sensor_msgs::PointCloud2>(cdr));
      break;
  }
  const std::lock_guard lock(mutex);
  news.insert(sensor.name);
}

void ToldModules::setListener(session::SessionListener* newListener) {
  listener = newListener;
  memory->setListener(newListener);
  robot::InputTap::set(*cameras, newListener);
  if (listener) listener->onStep({getPose(), getPose(), motion->getRobotVelocity()});
}

}  // namespace QV::ros2
