#include <chrono>
#include <map>
#include <optional>
#include <stdexcept>
#include <utility>

#include "platform/ko/log.h"
#include "platform/model/model_utils.h"
#include "ros2/link/internal/heard_plan.h"
#include "ros2/messages/scene_msgs.h"
#include "ros2/recording/internal/topic_names.h"

namespace QV::ros2 {
namespace {

using std::chrono::milliseconds;

// The survey ends this long after the last new topic.
constexpr milliseconds kSurveyQuiet{700};
constexpr milliseconds kLongestSurvey{3000};

/** Reads all topics from which a robot's description can be derived. */
class GraphSurvey {
 public:
  explicit GraphSurvey(HeardPlan& plan) : plan(plan) {}

  void look() {
    const auto start = MachineClock::now();
    changed = start;
    while (MachineClock::now() - start < kLongestSurvey && !xIsDone()) {
      for (const GraphTopic& topic : plan.graph->findTopics()) xSubscribe(topic);
      plan.await();
      for (const HeardMessage& message : plan.mailbox->take()) xTake(message);
    }
  }

  TopicSurvey make() { return surveyor.make(); }
  const std::optional<std::string>& getDescription() const { return description; }

 private:
  bool xIsDone() const {
    return description || (surveyor.isComplete() && MachineClock::now() - changed > kSurveyQuiet);
  }

  static bool xSays(const std::string& type) {
    return isOf<sensor_msgs::LaserScan>(type) || isOf<sensor_msgs::Range>(type) ||
           isOf<sensor_msgs::Image>(type) || isOf<sensor_msgs::PointCloud2>(type) ||
           isOf<sensor_msgs::CameraInfo>(type) || isOf<tf2_msgs::TFMessage>(type) ||
           isOf<nav_msgs::Odometry>(type);
  }

  // Another robot's tf may have the same names of frames.
  bool xIsOurs(const GraphTopic& topic) const {
    if (isOf<tf2_msgs::TFMessage>(topic.type))
      return topic.name == plan.node->resolve("/tf") ||
             topic.name == plan.node->resolve("/tf_static");
    return plan.nameSpace == "/" || topic.name.starts_with(plan.nameSpace + "/");
  }

  void xSubscribe(const GraphTopic& topic) {
    const bool isDescription =
        topic.name == plan.node->resolve("robot_description") && isOf<std_msgs::String>(topic.type);
    if (!isDescription && !(xSays(topic.type) && xIsOurs(topic))) return;
    auto& subscription = subscriptions[{topic.name, topic.type}];
    if (subscription) return;
    changed = MachineClock::now();
    surveyor.expect(topic.name, topic.type);
    // Frames come many to a topic, from several publishers.
    const std::size_t kept = isOf<tf2_msgs::TFMessage>(topic.type) ? 100 : 1;
    const Qos qos{topic.qos.transientLocal, topic.qos.transientLocal, 100};
    subscription = plan.node->subscribe(
        topic.name, *findMessageType(topic.type), qos,
        [mailbox = plan.mailbox.get(), topic, kept](const ReceivedMessage& message) {
          mailbox->put(topic.name, topic.type, message.cdr, kept);
        });
  }

  void xTake(const HeardMessage& message) {
    if (isOf<std_msgs::String>(message.type)) return xTakeDescription(message);
    surveyor.take({message.topic, message.type, message.cdr});
  }

  // Most robots' descriptions have only sensors of other tools.
  void xTakeDescription(const HeardMessage& message) {
    try {
      const std::string text = fromCdr<std_msgs::String>(message.cdr).data;
      const auto& kinds = plan.getKinds();
      const auto robot = Model::ModelUtils::robotFromXml(text, kinds);
      if (surveyDescription(robot, kinds).sensors.empty()) return;
      description = text;
    } catch (const std::exception& error) {
      ko::log::info("ROS2", "survey") << message.topic << " ignored: " << error.what();
    }
  }

  HeardPlan& plan;
  TopicSurveyor surveyor;
  std::map<std::pair<std::string, std::string>, std::unique_ptr<Subscription>> subscriptions;
  std::optional<std::string> description;
  MachineClock::time_point changed;
};

}  // namespace

void surveyGraph(HeardPlan& plan) {
  GraphSurvey graph(plan);
  graph.look();
  if (graph.getDescription()) {
    plan.description = *graph.getDescription();
    return surveyDescribed(plan);
  }
  try {
    plan.survey = graph.make();
  } catch (const std::runtime_error& error) {
    throw std::runtime_error(std::string("on the graph ") + error.what());
  }
  plan.description = describe(plan.survey);
}

}  // namespace QV::ros2
