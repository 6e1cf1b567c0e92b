#pragma once

#include <map>
#include <string>

#include "apps/output/frame.h"
#include "platform/ko/clock.h"
#include "platform/math/pose2d.h"
#include "platform/navigation/occupancy_map.h"
#include "sensor/hosting/navigation_module.h"

namespace QV::app {

class PathFollower;

/** A robot in a map, simulated or embedded, and its sensors: no command knows which it has. */
class RobotRun {
 public:
  RobotRun() = default;
  virtual ~RobotRun() = default;
  RobotRun(const RobotRun&) = delete;
  RobotRun& operator=(const RobotRun&) = delete;

  virtual const sensor::NavigationModule& getNavigation() const = 0;
  virtual sensor::SensorManager& getManager() = 0;
  virtual const OccupancyMap& getMap() const = 0;
  virtual Math::Pose2D getPose() const = 0;
  /** Puts the robot somewhere else. */
  virtual void setPose(const Math::Pose2D& newPose) = 0;

  /** "Simulated robot of kind 1". */
  virtual std::string getTitle() const = 0;
  virtual Frame getFrame() const = 0;
  /** How long after a subscription every sensor has given its first record. */
  virtual ko::Duration getSettlingTime() const = 0;

  /** By name, the families of described sensors that the manager does not have. */
  virtual std::map<std::string, std::string> getUnbuilt() const { return {}; }
  /** What a sensor reads and the robot does not have, and why; empty if there is no such thing. */
  virtual std::string findMissingInput(const std::string&) const { return {}; }

  /** From now on the robot drives about, if it has a body. */
  virtual void wander() {}
  /** Makes the robot be, or get, where `path` is `seconds` after its start. Call it often. */
  virtual void follow(const PathFollower& path, double seconds) = 0;
};

}  // namespace QV::app
