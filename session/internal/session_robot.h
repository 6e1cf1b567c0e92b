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

/** The periods of drivers that somebody else has to replace. */
struct DriverPeriods {
  ko::Duration body{20'000'000};
  ko::Duration sonars{100'000'000};
};

/** The robot of a session. Only this class knows which sort of robot it is. */
class SessionRobot {
 public:
  SessionRobot() = default;
  virtual ~SessionRobot() = default;
  SessionRobot(const SessionRobot&) = delete;
  SessionRobot& operator=(const SessionRobot&) = delete;

  virtual sensor::NavigationModule& getNavigation() = 0;
  sensor::SensorManager& getManager() { return getNavigation().getManager(); }
  /** Returns the current records of its sensors, in the order of their names. */
  virtual std::vector<Math::MetricalData> getRecords() { return getManager().getMetricalData(); }

  /** Returns the description of its sensors; null if they were not made from a description. */
  virtual const Model::Robot* getDescription() const { return nullptr; }
  virtual const Model::SensorKinds& getKinds() const { return Model::SensorKinds::standard(); }

  /** Returns the way in which a recording of it is played: "virtual", "log", or "simulated" and the
   * number of the kind. */
  virtual std::string getSort() const = 0;
  /** The title for people: "Simulated robot of kind 1". */
  virtual std::string getTitle() const = 0;
  virtual Frame getFrame() const = 0;
  /** Returns the time from a subscription to the first record of every sensor. */
  virtual ko::Duration getSettlingTime() const { return ko::Duration::zero(); }

  /** Null if it has none. */
  virtual boost::shared_ptr<const OccupancyMap> getMap() const = 0;
  virtual Math::Pose2D getPose() const = 0;
  /** Moves the robot to a pose in the map at once. */
  virtual void setPose(const Math::Pose2D& newPose) = 0;
  virtual bool canBeMoved() const { return !isRecording(); }
  /** Returns its radius, metres. */
  virtual float getRadius() const = 0;

  /** Drives forward and leftward (m/s) and turns (rad/s) in its own frame, until another
   * command. */
  virtual void drive(const Math::Pose2D& velocity) = 0;
  /** Returns its true velocity. */
  virtual Math::Pose2D getVelocity() const { return {}; }
  /** Moves the robot to the pose of `path` at `seconds` after its start, or drives it there. Call
   * it often. */
  virtual void follow(const TimedPath& path, double seconds) = 0;
  /** Makes it drive at random, or stop that, if it has a body. */
  virtual void wander(bool) {}

  /** The parts that touch something, with their positions in the map. */
  virtual std::map<std::string, Math::Position2D> getTouches() const { return {}; }
  /** Returns the positions of people in the map. */
  virtual std::vector<Math::Position2D> getPeople() const { return {}; }
  /** Returns the broker of the robot's modules; null if it has none. */
  virtual boost::shared_ptr<QVBroker> getBroker() const { return nullptr; }
  /** Returns the virtual robot, whose sensors can have faults; null for other robots. */
  virtual robot::VirtualRobot* getVirtualRobot() { return nullptr; }

  /** Returns the world's options, such as the seed, by name, for readers of a recording. */
  virtual std::map<std::string, std::string> getWorldFacts() const { return {}; }

  /** Sets the listener to its drivers' measurements and to commands that a recording repeats; null
   * for none. */
  virtual void setListener(SessionListener*) {}

  virtual DriverPeriods getDriverPeriods() const { return {}; }

  /**
   * Takes in what a robot with its own time has sent, and returns that time, which the session
   * follows. Nothing if time is the session's.
   */
  virtual std::optional<ko::Clock::time_point> catchUp() { return std::nullopt; }
  /** Waits until that time has come there; false if it stands still. */
  virtual bool awaitTime(ko::Clock::time_point) { return true; }

  /** Returns the time of a recording's next step; nothing at its end, and for other robots. */
  virtual std::optional<ko::Clock::time_point> getNextStep() const { return std::nullopt; }
  virtual void makeStep() {}
  virtual bool isRecording() const { return false; }
  /** True if more steps of the same moment follow the last one. */
  virtual bool isAmidSteps() const { return false; }
  /** Returns the played share of a recording, 0 to 1. */
  virtual double getShareDone() const { return 0.0; }
  /** Returns the start time of a recording; the next function, its length. */
  virtual ko::Clock::time_point getStart() const { return {}; }
  virtual std::optional<ko::Duration> getLength() const { return std::nullopt; }
};

/** See sensor_meaning.h. */
const Model::SensorKind* findKind(SessionRobot& robot, const std::string& sensor);
Model::PointMeaning findMeaning(SessionRobot& robot, const std::string& sensor);

}  // namespace QV::session
