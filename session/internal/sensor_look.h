#pragma once

#include <deque>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "session/internal/session_robot.h"
#include "session/internal/switches.h"
#include "session/snapshot.h"

namespace QV::session {

/** Observes a robot's sensors. Both must outlive it. */
class SensorLook {
 public:
  SensorLook(SessionRobot& robot, const Switches& switches) : robot(robot), switches(switches) {}

  /** Adds the sensors, in their present state. */
  void look(Snapshot& snapshot);

  /** Notes the robot's pose. Call it often: records are placed with the pose at their time. */
  void notePose();

  /** Notes the measurements since the last call. Call it often: rates are per second of simulated
   * time. */
  void noteMeasurements();

 private:
  using Records = std::vector<Math::MetricalData>;

  struct Placed {
    ko::Clock::time_point time;
    Math::Pose2D pose;
  };

  void xLookAtSwitches(SensorState& sensor);
  void xLookAtHealth(Snapshot& snapshot) const;
  void xLookAtRecord(const Math::MetricalData& record, SensorState& sensor) const;
  bool xIsNoteDue() const { return ko::Clock::now() >= noteNext; }
  void xNote(const Records& records);
  double xMeasureRate(const std::string& name);
  Math::Pose2D xPoseAt(ko::Clock::time_point time) const;

  SessionRobot& robot;
  const Switches& switches;
  std::map<std::string, std::set<std::string>> subscribers;
  std::deque<Placed> poses;
  /** The times at which each sensor last measured. */
  std::map<std::string, std::deque<ko::Clock::time_point>> measured;
  ko::Clock::time_point noteNext;
};

}  // namespace QV::session
