#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "platform/ko/clock.h"
#include "platform/math/pose2d.h"
#include "platform/model/robot.h"
#include "platform/model/sensor_kinds.h"
#include "platform/navigation/occupancy_map.h"
#include "sensor/hosting/navigation_module.h"
#include "session/snapshot.h"

namespace QV::robot {
class VirtualRobot;
}  // namespace QV::robot

namespace QV::session {

class SessionListener;
class TimedPath;

/** The periods of drivers that somebody else has to stand in for. */
struct DriverPeriods {
  ko::Duration body{20'000'000};
  ko::Duration sonars{100'000'000};
};

/** The robot of a session; nothing else knows which sort of robot it is. */
class SessionRobot {
 public:
  SessionRobot() = default;
  virtual ~SessionRobot() = default;
  SessionRobot(const SessionRobot&) = delete;
  SessionRobot& operator=(const SessionRobot&) = delete;

  virtual sensor::NavigationModule& getNavigation() = 0;
  sensor::SensorManager& getManager() { return getNavigation().getManager(); }
  /** Returns what its sensors say now, in the order of their names. */
  virtual std::vector<Math::MetricalData> getRecords() { return getManager().getMetricalData(); }

  /** Returns what its sensors were made from; null if they were not made from any. */
  virtual const Model::Robot* getDescription() const { return nullptr; }
  virtual const Model::SensorKinds& getKinds() const { return Model::SensorKinds::standard(); }

  /** Returns how a recording of it is played: "virtual", "log", or "simulated" and the number of
   * the kind. */
  virtual std::string getSort() const = 0;
  /** "Simulated robot of kind 1". */
  virtual std::string getTitle() const = 0;
  virtual Frame getFrame() const = 0;
  /** Returns how long after a subscription every sensor has given its first record. */
  virtual ko::Duration getSettlingTime() const { return ko::Duration::zero(); }

  /** Null if it has none. */
  virtual boost::shared_ptr<const OccupancyMap> getMap() const = 0;
  virtual Math::Pose2D getPose() const = 0;
  /** Puts the robot somewhere else. */
  virtual void setPose(const Math::Pose2D& newPose) = 0;
  virtual bool canBeMoved() const { return !isRecording(); }
  /** Returns the radius of the room that it takes, metres. */
  virtual float getRadius() const = 0;

  /** Forward, leftward (m/s) and turning (rad/s) in its own frame, until another command. */
  virtual void drive(const Math::Pose2D& velocity) = 0;
  /** Returns its true velocity. */
  virtual Math::Pose2D getVelocity() const { return {}; }
  /** Makes the robot be, or get, where `path` is `seconds` after its start. Call it often. */
  virtual void follow(const TimedPath& path, double seconds) = 0;
  /** Makes it drive about, or stop that, if it has a body. */
  virtual void wander(bool) {}

  /** The parts that touch something, and where they are in the map. */
  virtual std::map<std::string, Math::Position2D> getTouches() const { return {}; }
  /** Returns where people are in the map. */
  virtual std::vector<Math::Position2D> getPeople() const { return {}; }
  /** Returns the broker of the robot's services; null if it has none. */
  virtual boost::shared_ptr<QVBroker> getBroker() const { return nullptr; }
  /** Returns the robot whose sensors can be made to fail; null if they can't. */
  virtual robot::VirtualRobot* getVirtualRobot() { return nullptr; }

  /** Returns what chance and the like the world has, by name, for whoever reads of the session
   * later. */
  virtual std::map<std::string, std::string> getWorldFacts() const { return {}; }

  /** Hears of all that its drivers measure, and what a recording asks again; null for nobody. */
  virtual void setListener(SessionListener*) {}

  virtual DriverPeriods getDriverPeriods() const { return {}; }

  /**
   * Hears what a robot with a time of its own has said, and returns that time, which the session
   * follows. Nothing where time is the session's.
   */
  virtual std::optional<ko::Clock::time_point> catchUp() { return std::nullopt; }
  /** Waits until that time has come there; false if it stands still. */
  virtual bool awaitTime(ko::Clock::time_point) { return true; }

  /** Returns when a recording goes on; nothing at its end, and for what is no recording. */
  virtual std::optional<ko::Clock::time_point> getNextStep() const { return std::nullopt; }
  virtual void makeStep() {}
  virtual bool isRecording() const { return false; }
  /** True if the last step was one of several of the same moment, others of which follow. */
  virtual bool isAmidSteps() const { return false; }
  /** Returns the share of a recording that is done, 0 to 1. */
  virtual double getShareDone() const { return 0.0; }
  /** Returns when a recording began; the next one, how long it is. */
  virtual ko::Clock::time_point getStart() const { return {}; }
  virtual std::optional<ko::Duration> getLength() const { return std::nullopt; }
};

/** See sensor_meaning.h. */
const Model::SensorKind* findKind(SessionRobot& robot, const std::string& sensor);
Model::PointMeaning findMeaning(SessionRobot& robot, const std::string& sensor);

}  // namespace QV::session
