#pragma once

#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "platform/ko/periodic_task.h"
#include "ros2/link/internal/heard_drive.h"
#include "ros2/link/internal/heard_plan.h"
#include "ros2/link/internal/heard_topic.h"
#include "ros2/recording/internal/told_modules.h"
#include "sensor/core/sensor_manager.h"

namespace QV::ros2 {

/** The modules of a robot that a graph tells, and what of the graph is heard. Thread-safe.
 */
class HeardModules {
 public:
  static constexpr ko::Duration kTurn{10'000'000};

  explicit HeardModules(HeardPlan plan);
  ~HeardModules();

  ToldModules& getModules() { return modules; }
  const std::string& getDescription() const { return plan.description; }
  const boost::shared_ptr<const OccupancyMap>& getMap() const { return plan.map; }
  const sensor::SensorFactory& getSensors() const { return plan.sensors; }
  HeardTime& getTime() { return *plan.time; }
  void drive(const Math::Pose2D& velocity) { cmdVel.set(velocity); }

  /** See HeardRobot. */
  void obey(const sensor::SensorManager* newManager);

  /** Tells what has come, and hears what is wanted now. Called every kTurn, too. */
  void turn();
  /** Hears what is wanted now, and tells nothing: while time stands nobody reads it. */
  void listen();
  /** Waits until something has come; not longer than that. */
  void await(std::chrono::nanoseconds most) { plan.mailbox->await(most); }

 private:
  void xAddTopics();
  bool xIsWanted(const ToldSensor& sensor) const;
  bool xIsWanted(const HeardTopic& topic) const;
  void xListen();
  void xTell();
  void xLookAt(HeardTopic& topic);
  void xLookForSilence();

  HeardPlan plan;
  ToldModules modules;
  HeardDrive cmdVel;
  std::mutex turning;
  const sensor::SensorManager* manager = nullptr;
  std::vector<HeardTopic> topics;
  /** The last ranges of those that are told by ranges without a time of their own. */
  std::map<std::string, ko::Clock::time_point> lastRanges;
  ko::PeriodicTask task;
};

}  // namespace QV::ros2
