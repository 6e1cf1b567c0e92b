#pragma once

#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "platform/api.h"
#include "platform/ko/clock.h"
#include "platform/math/pose2d.h"
#include "platform/middleware/qv_broker.h"
#include "platform/model/robot.h"
#include "platform/model/sensor_kinds.h"
#include "robot/world/faults/fault.h"
#include "sensor/core/sensor_manager.h"
#include "session/snapshot.h"

namespace QV::session {

/** Wanted subscriptions: a subscriber's name, and the sensors that it wants. */
using Demand = std::map<std::string, std::set<std::string>>;

inline void addDemand(Demand& demand, const Demand& others) {
  for (const auto& [subscriber, sensors] : others) {
    demand[subscriber].insert(sensors.begin(), sensors.end());
  }
}

struct SessionParts;

/**
 * Controls one robot: simulated, virtual, recorded or from a ROS 2 graph. Open it with the
 * functions of open.h, SessionReplay or openHeardRobot(). Time advances in run(), step(),
 * keepPace() and seek(), and while hardware starts.
 *
 * All robots have this interface. But a recording can't be driven, setPose() works neither for a
 * recording nor for a robot on a graph, only a virtual robot has faults and wanders, and a goal
 * needs a map.
 * - Frames: poses and positions are in the map M; without a map, in the frame of the log, of tf or
 *   of the odometry. Records are as its manager gives them.
 * - Units: metres, radians, m/s, rad/s; durations are nanoseconds.
 * - Lifetime: not copyable. Only one session with simulated time may exist at a time.
 * - Threads: subscribe, unsubscribe, enable and diagnose are thread-safe. All other functions are
 *   for the thread that opened the session.
 * - Errors: UsageError for an unknown sensor or family, and for a command that the robot can't
 *   obey, except wander(); exceptions of hardware reach the caller.
 *
 *     const auto session = QV::session::openVirtual("porter");
 *     session->subscribe("my navigation", {"Sonar", "Laser"});
 *     session->run(boost::chrono::seconds(2));
 *     for (const auto& sensor : session->look().sensors)
 *       if (sensor.nearest) std::cout << sensor.name << ": " << *sensor.nearest << " m\n";
 */
class QV_API Session {
 public:
  /** Stops the robot and all sensors. */
  ~Session();
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;

  /** Never waits for a sensor that is starting or stopping. */
  Snapshot look();
  /** For people: "Virtual robot porter". */
  std::string getTitle() const;
  Math::Pose2D getPose() const;
  /** The map; null if it has none. */
  boost::shared_ptr<const OccupancyMap> getMap() const;
  float getRadius() const;
  /** The frame in which records place their sensors. */
  Frame getFrame() const;
  sensor::SensorManager& getManager() const;
  /** The broker of the robot's modules; null if it has none. */
  boost::shared_ptr<QVBroker> getBroker() const;
  /** The description of its sensors; null if they were not made from one. */
  const Model::Robot* getDescription() const;
  const Model::SensorKinds& getKinds() const;

  /** Subscribes to sensors or families, by name. Waits while hardware starts. */
  void subscribe(const std::string& subscriber, const std::set<std::string>& names);
  void unsubscribe(const std::string& subscriber, const std::set<std::string>& names);
  /** Enables or disables a sensor or a family, and starts or stops its records. */
  void enable(const std::string& name, bool on);
  void diagnose(const std::string& sensor, bool success);
  /** Sets what outlets want, besides the subscriptions above: subscribes and unsubscribes the
   * difference to the last demand. A sensor whose hardware throws is logged and left out. */
  void setDemand(const Demand& demand);

  /** Drives by hand, m/s and rad/s, until another command, or until calls of keepPace() have
   * counted 0.5 s of real time since this call. run() and step() do not count. */
  void drive(float forward, float turn);
  /** Drives forward (x) and leftward (y), turning (theta), for `hold` of ko::Clock. */
  void drive(const Math::Pose2D& velocity, ko::Duration hold);
  /** Drives to a position in M on a planned path. Waits 15 s for an obstacle, then gives up. */
  void setGoal(const Math::Position2D& position);
  /** Follows straight lines through two positions or more, turning on the spot at corners; `speed`
   * (m/s) and `turnSpeed` (rad/s) are above 0. Returns the seconds that this takes. A simulated
   * robot follows exactly. Other robots may lag; the path does not wait for them. */
  double follow(const std::vector<Math::Position2D>& path, double speed, double turnSpeed);
  /** Drives about in free space. Only a virtual robot does; others stop, without an error. */
  void wander();
  void stop();
  void setPose(const Math::Pose2D& pose);

  /** The sensors that can fail, faulty now or not; empty without a virtual robot. */
  std::vector<std::string> getFaultySensors() const;
  /** The faults that a sensor can have; see VirtualRobot. */
  std::vector<robot::FaultKind> getPossibleFaults(const std::string& sensor) const;
  void setFault(const robot::Fault& fault);
  void clearFault(const std::string& sensor);

  /** Advances by a duration of ko::Clock, paused or not. */
  void run(ko::Duration duration);
  /** The time from a subscription to the first record of every sensor, at most. */
  ko::Duration getSettlingTime() const;
  /** Recordings: plays the next step, false at the end. Other sessions: runs 0.1 s. */
  bool step();
  /** The played share of a recording, 0 to 1. */
  double getShareDone() const;
  /** The length of an MCAP or rosbag2 recording; nothing for a log, a robot or a simulation. */
  std::optional<ko::Duration> getLength() const;
  /** Goes to a time of a recording, counted from its start; UsageError without getLength(). Going
   * back replays from the start with a new manager, broker and description: don't use references
   * to the old ones any more. Subscriptions and demand are gone, too. */
  void seek(ko::Duration sinceStart);

  /** Advances by the speed multiplied by the real duration `machine`; not at all while paused. */
  void keepPace(ko::Duration machine);
  void pause(bool on);
  bool isPaused() const;
  /** Sets the speed: seconds of the session per real second, above 0. */
  void setSpeed(double speed);

 private:
  friend struct SessionParts;
  explicit Session(std::unique_ptr<SessionParts> parts);
  void xAdvance(ko::Clock::time_point end);
  void xReopen();

  std::unique_ptr<SessionParts> parts;
};

}  // namespace QV::session
