#include "ros2/link/internal/heard_plan.h"

#include <algorithm>
#include <chrono>
#include <map>
#include <set>
#include <stdexcept>
#include <utility>

#include <boost/make_shared.hpp>

#include "platform/ko/log.h"
#include "platform/model/model_utils.h"
#include "ros2/messages/scene_msgs.h"
#include "ros2/recording/internal/conversions.h"
#include "ros2/recording/internal/topic_names.h"

namespace QV::ros2 {
namespace {

using std::chrono::milliseconds;

constexpr milliseconds kQuiet{300};
constexpr milliseconds kLongestLook{2000};
constexpr milliseconds kLongestWait{3000};
constexpr char kClockTopic[] = "/clock";

bool isPublished(const HeardPlan& plan, const std::vector<GraphTopic>& topics,
                 const std::string& name) {
  return std::ranges::count(topics, plan.node->resolve(name), &GraphTopic::name) > 0;
}

void followClock(HeardPlan& plan) {
  plan.time = std::make_unique<HeardTime>(HeardTime::Source::clockTopic);
  plan.clock = plan.node->subscribe(
      kClockTopic, rosgraph_msgs::Clock::getType(), {false, false, 1},
      [time = plan.time.get(), mailbox = plan.mailbox.get()](const ReceivedMessage& message) {
        time->setClock(fromCdr<rosgraph_msgs::Clock>(message.cdr).clock);
        mailbox->wake();
      },
      [time = plan.time.get()](std::size_t publishers) { time->setPublished(publishers > 0); });
  const auto end = MachineClock::now() + kLongestWait;
  while (!plan.time->hasBegun() && MachineClock::now() < end) plan.await();
  if (!plan.time->hasBegun())
    throw std::runtime_error("somebody expected who publishes /clock, nobody found");
}

// The frame counts with another map, too: that is where tf places the robot.
void takeMap(HeardPlan& plan, const HeardMessage& message) {
  try {
    const auto grid = fromCdr<nav_msgs::OccupancyGrid>(message.cdr);
    plan.mapFrame = withoutSlash(grid.header.frame_id);
    if (!plan.map) plan.map = boost::make_shared<OccupancyMap>(mapOf(grid));
  } catch (const std::exception& error) {
    ko::log::warning("ROS2", "open") << message.topic << ": refused: " << error.what();
  }
}

// Publishers of a map keep it for late subscribers.
void fetchMap(HeardPlan& plan) {
  const std::string topic = inNameSpace(plan.nameSpace, "map");
  const auto subscription = plan.node->subscribe(
      topic, nav_msgs::OccupancyGrid::getType(), {true, true, 1},
      [mailbox = plan.mailbox.get(), topic](const ReceivedMessage& message) {
        mailbox->put(topic, nav_msgs::OccupancyGrid::getType().getName(), message.cdr, 1);
      });
  const auto end = MachineClock::now() + kLongestWait;
  while (MachineClock::now() < end) {
    const auto messages = plan.mailbox->take();
    if (!messages.empty()) return takeMap(plan, messages.front());
    plan.await();
  }
}

// A misspelt name would do nothing.
void checkRemaps(const HeardPlan& plan, const std::map<std::string, std::string>& remaps) {
  std::set<std::string> known = {kClockTopic, "/tf", "/tf_static"};
  for (const char* const name :
       {"odom", "joint_states", "people", "map", "robot_description", "cmd_vel"})
    known.insert(inNameSpace(plan.nameSpace, name));
  for (const auto& [topic, sensor] : plan.survey.sensors)
    known.insert(topic.front() == '/' ? topic : inNameSpace(plan.nameSpace, topic));
  for (const auto& [from, to] : remaps) {
    if (known.count(from) > 0) continue;
    std::string names;
    for (const auto& name : known) names += (names.empty() ? "" : ", ") + name;
    throw std::invalid_argument("a topic to remap expected (" + names + "), \"" + from +
                                "\" given");
  }
}

}  // namespace

void HeardPlan::await() const {
  mailbox->await(kGlance);
  if (goesOn && !goesOn()) throw std::runtime_error("the search on the graph was interrupted");
}

std::string inNameSpace(const std::string& nameSpace, const std::string& topic) {
  return (nameSpace == "/" ? "/" : nameSpace + "/") + topic;
}

std::vector<GraphTopic> awaitTopics(const HeardPlan& plan) {
  const auto end = MachineClock::now() + kLongestLook;
  std::vector<GraphTopic> topics;
  auto changed = MachineClock::now();
  while (MachineClock::now() < end) {
    auto now = plan.graph->findTopics();
    if (now.size() != topics.size()) changed = MachineClock::now();
    topics = std::move(now);
    if (!topics.empty() && MachineClock::now() - changed > kQuiet) break;
    plan.await();
  }
  return topics;
}

void surveyDescribed(HeardPlan& plan) {
  const auto& kinds = plan.getKinds();
  plan.survey = surveyDescription(Model::ModelUtils::robotFromXml(plan.description, kinds), kinds,
                                  plan.nameSpace == "/" ? "" : plan.nameSpace);
}

HeardPlan planRobot(const HeardRobotOptions& options) {
  HeardPlan plan;
  plan.graph = std::make_unique<Graph>(options.graph);
  plan.node = plan.graph->createNode(options.node, options.nameSpace);
  plan.nameSpace = options.nameSpace;
  plan.sensors = options.sensors;
  plan.goesOn = options.goesOn;
  const auto topics = awaitTopics(plan);
  if (options.usesSimTime.value_or(isPublished(plan, topics, kClockTopic))) {
    followClock(plan);
  } else {
    plan.time = std::make_unique<HeardTime>(HeardTime::Source::wallClock);
  }
  plan.map = options.map;
  if (isPublished(plan, topics, "map")) fetchMap(plan);
  plan.description = options.description;
  if (plan.description.empty()) {
    surveyGraph(plan);
  } else {
    surveyDescribed(plan);
  }
  if (!plan.mapFrame.empty()) plan.survey.map = plan.mapFrame;
  checkRemaps(plan, options.graph.remaps);
  return plan;
}

}  // namespace QV::ros2
