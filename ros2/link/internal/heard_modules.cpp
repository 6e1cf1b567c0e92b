#include "ros2/link/internal/heard_modules.h"

#include <algorithm>
#include <utility>

#include "platform/ko/log.h"
#include "ros2/messages/scene_msgs.h"

namespace QV::ros2 {
namespace {

// A sonar without a message for this long has no range.
constexpr ko::Duration kSilence{2'000'000'000};

const MessageType& typeOf(ToldSort sort) {
  switch (sort) {
    case ToldSort::scan:
      return sensor_msgs::LaserScan::getType();
    case ToldSort::depth:
      return sensor_msgs::Image::getType();
    case ToldSort::cloud:
      return sensor_msgs::PointCloud2::getType();
    case ToldSort::range:
    case ToldSort::contact:
    case ToldSort::touch:
      break;
  }
  return sensor_msgs::Range::getType();
}

Dating datingBy(HeardTime& time) {
  return [&time](const builtin_interfaces::Time& stamp) { return time.date(stamp); };
}

/**
 * True if one is started; of sensors whose kind has one for all of them, bumpers, it is that one.
 */
bool isOneStarted(const sensor::SensorManager& manager, const Model::SensorKind* kind) {
  if (!kind || !manager.isFamily(kind->family)) return false;
  return std::ranges::any_of(manager.getSensorsByFamily(kind->family),
                             [&](const auto& name) { return manager.isSensorStarted(name); });
}

}  // namespace

HeardModules::HeardModules(HeardPlan given)
    : plan(std::move(given)),
      modules(plan.description, plan.survey, datingBy(*plan.time), "ROS2", plan.getKinds()),
      cmdVel(*plan.node, *plan.time, inNameSpace(plan.nameSpace, "cmd_vel")) {
  plan.time->begin(ko::Clock::now());
  xAddTopics();
  task.setName("ROS2");
  task.setPeriod(kTurn);
  task.setCallback([this] { turn(); });
  task.start(false);
}

HeardModules::~HeardModules() {
  task.stop();
  modules.setListener(nullptr);
}

void HeardModules::xAddTopics() {
  constexpr std::size_t kManyFrames = 100;
  for (const auto& [topic, sensor] : plan.survey.sensors)
    topics.emplace_back(HeardTopicOptions{topic, &typeOf(sensor.sort)});
  const auto& frames = tf2_msgs::TFMessage::getType();
  topics.emplace_back(
      HeardTopicOptions{"/tf", &frames, {false, false, 100}, kManyFrames, Absence::saidOfGone});
  topics.emplace_back(
      HeardTopicOptions{"/tf_static", &frames, {true, true, 100}, kManyFrames, Absence::unsaid});
  const auto add = [this](const std::string& name, const MessageType& type, Absence absence) {
    topics.emplace_back(HeardTopicOptions{.name = name, .type = &type, .absence = absence});
  };
  if (!plan.survey.odometryTopic.empty())
    add(plan.survey.odometryTopic, nav_msgs::Odometry::getType(), Absence::saidOfGone);
  add(inNameSpace(plan.nameSpace, "joint_states"), sensor_msgs::JointState::getType(),
      Absence::saidOfGone);
  add(inNameSpace(plan.nameSpace, "people"), vision_msgs::Detection3DArray::getType(),
      Absence::unsaid);
}

void HeardModules::obey(const sensor::SensorManager* newManager) {
  const std::lock_guard lock(turning);
  manager = newManager;
}

bool HeardModules::xIsWanted(const ToldSensor& sensor) const {
  if (!manager) return true;
  if (manager->isSensor(sensor.name)) return manager->isSensorStarted(sensor.name);
  const int type = modules.getModel().sensorConfigs.at(sensor.name).type;
  return isOneStarted(*manager, plan.getKinds().findType(type));
}

bool HeardModules::xIsWanted(const HeardTopic& topic) const {
  const auto sensor = plan.survey.sensors.find(topic.getName());
  if (sensor != plan.survey.sensors.end()) return xIsWanted(sensor->second);
  return &topic.getType() != &vision_msgs::Detection3DArray::getType() || modules.wantsPeople();
}

void HeardModules::turn() {
  const std::lock_guard lock(turning);
  plan.time->now();
  xListen();
  xTell();
  xLookForSilence();
  cmdVel.repeat();
}

void HeardModules::listen() {
  const std::lock_guard lock(turning);
  xListen();
}

void HeardModules::xListen() {
  for (HeardTopic& topic : topics) {
    const bool isWanted = xIsWanted(topic);
    // Old values are forgotten at the start, so that the first reading is new.
    if (isWanted && !topic.isOn()) modules.forget(topic.getName());
    topic.set(isWanted, *plan.node, *plan.mailbox);
    xLookAt(topic);
  }
}

void HeardModules::xTell() {
  for (const HeardMessage& message : plan.mailbox->take()) {
    modules.tell({message.topic, message.type, message.cdr});
    const auto sensor = plan.survey.sensors.find(message.topic);
    if (sensor != plan.survey.sensors.end() && sensor->second.sort == ToldSort::range)
      lastRanges[message.topic] = ko::Clock::now();
  }
}

void HeardModules::xLookAt(HeardTopic& topic) {
  const auto change = topic.look();
  if (change == HeardTopic::Change::none) return;
  if (change == HeardTopic::Change::found) {
    ko::log::info("ROS2", "turn") << topic.getName() << ": published again";
    return;
  }
  const bool isSensors = plan.survey.sensors.count(topic.getName()) > 0;
  if (change == HeardTopic::Change::lost && isSensors) {
    // The last message would count for ever otherwise.
    plan.mailbox->discard(topic.getName());
    modules.forget(topic.getName());
  }
  ko::log::warning("ROS2", "turn")
      << topic.getName() << " (" << topic.getType().getName() << "): nobody publishes it"
      << (change == HeardTopic::Change::lost ? " any more" : "")
      << (isSensors ? "" : ": what it said last counts on");
}

void HeardModules::xLookForSilence() {
  std::erase_if(lastRanges, [this](const auto& last) {
    if (ko::Clock::now() - last.second < kSilence) return false;
    modules.forget(last.first);
    return true;
  });
}

}  // namespace QV::ros2
