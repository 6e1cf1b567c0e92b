#pragma once

#include <map>
#include <string>
#include <vector>

#include "platform/ko/clock.h"
#include "platform/math/pose2d.h"
#include "platform/model/sensor_kind.h"
#include "platform/navigation/occupancy_map.h"
#include "sensor/hosting/navigation_module.h"
#include "session/frame.h"

namespace QV::session {

class PathFollower;

/** A robot in a map, simulated or virtual, and its sensors: no command knows which it has. */
class Session {
 public:
  Session() = default;
  virtual ~Session() = default;
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;

  virtual const sensor::NavigationModule& getNavigation() const = 0;
  virtual sensor::SensorManager& getManager() = 0;
  /** Null if it has none. */
  virtual boost::shared_ptr<const OccupancyMap> getSharedMap() const = 0;
  const OccupancyMap& getMap() const { return *getSharedMap(); }
  virtual Math::Pose2D getPose() const = 0;
  /** Puts the robot somewhere else. */
  virtual void setPose(const Math::Pose2D& newPose) = 0;

  /** What the points of a sensor mean; of one that is not there, a scan. */
  virtual Model::PointMeaning getMeaning(const std::string& sensor) const = 0;
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

  /** Forward, leftward (m/s) and turning (rad/s) in its own frame, until another command. */
  virtual void drive(const Math::Pose2D& velocity) = 0;
  /** What it really does. */
  virtual Math::Pose2D getVelocity() const = 0;
  /** Of the room that it takes, metres. */
  virtual float getRadius() const = 0;

  /** The parts that touch something, and where they are in the map. */
  virtual std::map<std::string, Math::Position2D> getTouches() const { return {}; }
  /** Where people are in the map. */
  virtual std::vector<Math::Position2D> getPeople() const { return {}; }
  /** Behind which the robot's services are; null if it has none. */
  virtual boost::shared_ptr<QVBroker> getBroker() const { return nullptr; }
};

}  // namespace QV::session
