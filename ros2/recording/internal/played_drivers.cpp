#include "ros2/recording/internal/played_drivers.h"

#include <algorithm>
#include <iterator>
#include <stdexcept>
#include <utility>

#include <boost/make_shared.hpp>

#include "platform/ko/log.h"
#include "platform/middleware/contracts/navigation_contract.h"
#include "platform/model/model_utils.h"
#include "platform/model/sensor_properties.h"
#include "platform/vision/qv_image.h"
#include "robot/services/internal/input_listener.h"
#include "robot/services/internal/mode_pairs.h"
#include "robot/services/internal/robot_model_service.h"
#include "ros2/recording/internal/sensor_sorts.h"
#include "ros2/recording/internal/topic_names.h"
#include "session/internal/session_listener.h"

namespace QV::ros2 {
namespace {

constexpr ko::Duration kImagePeriod{100'000'000};

const std::string& descriptionOf(const SessionReader& reader) {
  if (!reader.getDescription().empty()) return reader.getDescription();
  throw std::runtime_error("a robot's description expected on /robot_description, there is none");
}

}  // namespace

PlayedDrivers::PlayedDrivers(std::unique_ptr<SessionReader> given,
                             const sensor::SensorFactory& sensors)
    : PlayedRobot(std::move(given)),
      isLog(getSort() == "log"),
      wasHeard(getSort() == "heard"),
      model(Model::ModelUtils::robotFromXml(descriptionOf(getReader()), sensors.getKinds())),
      memory(boost::make_shared<robot::MemoryService>(broker)),
      devices(boost::make_shared<robot::DeviceManager>(broker)),
      motion(boost::make_shared<robot::MotionService>(model)),
      cameras(boost::make_shared<robot::VideoDevice>()) {
  for (const auto& joint : model.joints) jointOfKey[jointKeyOf(joint.name)] = joint.name;
  xSortSensors();
  xAddModules();
  xAddCameras();
  if (isLog || wasHeard) modes = robot::makeLaserModes(broker, devices, model);
  // Sensors can't start before the memory has their keys.
  xReadOn(ko::Clock::now());
  xStep();
  beat.setName("Recording");
  beat.setPeriod(getDriverPeriods().body);
  beat.compensateCallbackTime(true);
  beat.setCallback([this] { xStep(); });
  if (!isLog) beat.start(false);
  navigation = boost::make_shared<sensor::NavigationModule>(broker, sensors);
  hosting.emplace(broker, navigation);
}

// After the session, commands that stop sensors take effect at once and no driver measures.
PlayedDrivers::~PlayedDrivers() {
  beat.stop();
  other.stop();
  if (sonars) sonars->setSource({});
  // The cameras are removed, so that remaining holders of the modules get no more images.
  const auto count = static_cast<int>(camerasOf(model).size());
  for (int index = kDepthCamera; index < kDepthCamera + count; ++index)
    cameras->removeCamera(index);
  try {
    if (modes.empty()) modes = robot::makeLaserModes(broker, devices, model);
  } catch (const std::exception& error) {
    ko::log::warning("Recording", "stop") << error.what();
  }
}

void PlayedDrivers::xSortSensors() {
  for (const auto& [name, config] : model.sensorConfigs) {
    // Ranges of others' kinds are no sonar driver's.
    if (sortOf(config, Model::SensorKinds::standard()) == SensorSort::range)
      sonarOfKey[config.memoryKeys[0]] = name;
  }
  const robot::ModePairs modePairs(model);
  for (const auto& [actuator, key] : modePairs.getKeys()) modeKeys.insert(key);
}

void PlayedDrivers::xAddModules() {
  broker->registerModule(memory);
  broker->registerModule(devices);
  broker->registerModule(motion);
  broker->registerModule(
      boost::make_shared<robot::RobotModelService>(getReader().getDescription()));
  if (!isLog || !camerasOf(model).empty()) broker->registerModule(cameras);
  // A sonar driver measures as soon as it is made, but gives nothing before it has a source.
  if (isLog) return;
  sonars = boost::make_shared<robot::SonarDriver>(broker, model, getDriverPeriods().sonars);
  if (!wasHeard)
    sonars->setSource([this](const std::string& sonar) { return xMeasureSonar(sonar); });
  broker->registerModule(sonars);
}

void PlayedDrivers::xAddCameras() {
  int index = kDepthCamera;
  for (const Model::SensorConfig* config : camerasOf(model)) {
    const Model::SensorProperties properties(*config);
    cameras->addCamera({index++, peopleFrameOf(*config), properties.getInteger("modelCode"),
                        properties.getAngle("horizontalAngularRange"),
                        properties.getAngle("verticalAngularRange"),
                        [this, sensor = config->name](auto& depth, auto& time) {
                          xShowImage(sensor, depth, time);
                        }});
  }
}

// A laser takes its mode at once, as for the log itself.
float PlayedDrivers::xMeasureSonar(const std::string& sonar) {
  const auto now = ko::Clock::now();
  auto& told = ranges[sonar];
  while (!told.empty() && told.front().time < now) told.pop_front();
  while (told.size() > 1 && told[1].time == now) told.pop_front();
  if (!told.empty() && told.front().time == now) {
    const InputWrite& write = told.front().write;
    if (write.value.isFloat() || write.value.isInt()) return write.value.toFloat();
    // A sonar that does not answer leaves no number.
    memory->insertData(write.key, write.value);
  }
  throw std::runtime_error("the recording has no data of this sensor");
}

// Each image was requested at its own time; other clients get the last image in between.
void PlayedDrivers::xShowImage(const std::string& camera, cv::Mat_<std::uint16_t>& depth,
                               ko::Clock::time_point& time) {
  auto& waiting = getReader().images[camera];
  auto& last = shown[camera];
  for (; !waiting.empty() && waiting.front().time <= time; waiting.pop_front())
    last = std::move(waiting.front());
  const bool isMissing = last.depth.empty() || time - last.time >= kImagePeriod;
  // A camera without messages gives no image.
  if (isMissing && wasHeard) return;
  if (isMissing) throw std::runtime_error("the recording has no data of this sensor");
  depth = last.depth;
  time = last.stamp;
}

// Inputs are read one beat ahead, so that an input between two beats is known in time.
void PlayedDrivers::xReadOn(ko::Clock::time_point now) {
  getReader().readInputsTo(now + getDriverPeriods().body);
  xTakeInputs();
  xAwaitOther();
}

void PlayedDrivers::xTakeInputs() {
  auto& inputs = getReader().inputs;
  for (; !inputs.empty(); inputs.pop_front()) {
    SessionInputs& told = inputs.front();
    const auto isSonars = [&](const InputWrite& write) {
      const auto sonar = sonarOfKey.find(write.key);
      if (isLog || wasHeard || sonar == sonarOfKey.end()) return false;
      auto& waiting = ranges[sonar->second];
      // Of a sonar that nobody asks.
      while (!waiting.empty() && waiting.front().time < ko::Clock::now()) waiting.pop_front();
      waiting.push_back({told.time, write, told.claim});
      return told.time > getReader().getFacts().start;
    };
    std::erase_if(told.writes, isSonars);
    (xIsOnBeat(told) ? steps : others).push_back(std::move(told));
  }
}

bool PlayedDrivers::xIsOnBeat(const SessionInputs& told) const {
  const ko::Duration since = told.time - getReader().getFacts().start;
  return told.stepped && !(wasHeard && since % getDriverPeriods().body != ko::Duration::zero());
}

void PlayedDrivers::xStep() {
  const auto now = ko::Clock::now();
  xReadOn(now);
  for (; !steps.empty() && steps.front().time <= now; steps.pop_front()) xTell(steps.front());
}

// A log's messages are handled between due tasks, and before a snapshot.
void PlayedDrivers::makeStep() {
  if (isLog) xStep();
  PlayedRobot::makeStep();
}

void PlayedDrivers::xTell(const SessionInputs& told) {
  for (const InputWrite& write : told.writes) {
    try {
      if (!write.value.isFloat() && !write.value.isInt()) held[write.key] = told.claim;
      xWrite(write);
    } catch (const std::exception& error) {
      if (refused.insert(write.key).second)
        ko::log::warning("Recording", "play") << write.key << ": " << error.what();
    }
  }
  if (!told.stepped) return;
  motion->setRobotVelocity(told.velocity);
  if (!isLog && !wasHeard) motion->setGroundPose(Math::Transform());
  if (getListener()) getListener()->onStep({getPose(), getPose(), told.velocity});
}

void PlayedDrivers::xWrite(const InputWrite& write) {
  if ((isLog || wasHeard) && modeKeys.count(write.key) > 0) return;
  const auto joint = jointOfKey.find(write.key);
  if (joint != jointOfKey.end())
    motion->setJointPositions({{joint->second, write.value.toDouble()}});
  // Blind zones raise it themselves, once more.
  if (write.key == NavigationContract::kMotionDetectedEvent) return memory->declareEvent(write.key);
  if (write.raised) return memory->raiseEvent(write.key, write.value);
  memory->insertData(write.key, write.value);
}

void PlayedDrivers::xAwaitOther() {
  const auto now = ko::Clock::now();
  for (; !others.empty() && others.front().time <= now; others.pop_front()) xTell(others.front());
  if (others.empty() || other.isRunning()) return;
  other.setName("Recording, between");
  other.setPeriod(others.front().time - now);
  other.setCallback([this] {
    other.stop();
    xAwaitOther();
  });
  other.start(false);
}

std::vector<Math::MetricalData> PlayedDrivers::getRecords() {
  if (!isLog) return SessionRobot::getRecords();
  // A sensor's memory holds only start values until its first message, so its records are dropped.
  std::vector<Math::MetricalData> records;
  const auto& manager = navigation->getManager();
  for (const std::string& name : manager.getSensorList()) {
    if (!hasSeen(name)) continue;
    std::ranges::move(manager.getSensorPtr(name)->getData(), std::back_inserter(records));
  }
  return records;
}

void PlayedDrivers::setListener(session::SessionListener* newListener) {
  PlayedRobot::setListener(newListener);
  memory->setListener(newListener);
  robot::InputTap::set(*cameras, newListener);
  if (newListener) newListener->onStep({getPose(), getPose(), motion->getRobotVelocity()});
}

}  // namespace QV::ros2
