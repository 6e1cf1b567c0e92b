#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <string>

#include <boost/shared_ptr.hpp>

#include "platform/navigation/occupancy_map.h"
#include "ros2/graph/graph.h"
#include "ros2/link/heard_robot.h"
#include "ros2/link/internal/heard_mailbox.h"
#include "ros2/link/internal/heard_time.h"
#include "ros2/recording/internal/topic_survey.h"
#include "sensor/real/sensor_factory.h"

namespace QV::ros2 {

using MachineClock = std::chrono::steady_clock;

/** The time between two looks of whoever waits for a graph. */
inline constexpr std::chrono::milliseconds kGlance{50};

/** A place on a graph, and what there is of a robot: made in the machine's time, before it begins.
 */
struct HeardPlan {
  std::unique_ptr<Graph> graph;
  std::unique_ptr<GraphNode> node;
  std::string nameSpace;
  std::unique_ptr<HeardMailbox> mailbox = std::make_unique<HeardMailbox>();
  std::unique_ptr<HeardTime> time;
  /** Null where the wall clock counts. */
  std::unique_ptr<Subscription> clock;
  std::string description;
  TopicSurvey survey;
  boost::shared_ptr<const OccupancyMap> map;
  /** Empty if no message names it. */
  std::string mapFrame;
  sensor::SensorFactory sensors;

  const Model::SensorKinds& getKinds() const { return sensors.getKinds(); }
  /** Empty where nobody wants to end the looking about. */
  std::function<bool()> goesOn;

  /** Waits for messages, a glance long; std::runtime_error if somebody wants no more. */
  void await() const;
};

/** Looks about. Errors as HeardRobot has them. */
HeardPlan planRobot(const HeardRobotOptions& options);

/** Waits until the topics of others have not changed for a while; at most two seconds. */
std::vector<GraphTopic> awaitTopics(const HeardPlan& plan);

/** "/robot1/odom" of "odom" in "/robot1". */
std::string inNameSpace(const std::string& nameSpace, const std::string& topic);

/** Fills description and survey from the graph. Throws std::runtime_error if there is no sensor
 * topic. */
void surveyGraph(HeardPlan& plan);

/** Surveys the sensors of the plan's description. */
void surveyDescribed(HeardPlan& plan);

}  // namespace QV::ros2
