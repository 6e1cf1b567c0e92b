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
#include "robot/world/faults/fault.h"
#include "sensor/core/sensor_manager.h"
#include "session/snapshot.h"

namespace QV::session {

/** Who wants which sensors: subscriber to sensors. Whoever is not in it wants nothing. */
using Demand = std::map<std::string, std::set<std::string>>;

/** Adds the wishes of others. */
inline void addDemand(Demand& demand, const Demand& others) {
  for (const auto& [subscriber, sensors] : others) {
    demand[subscriber].insert(sensors.begin(), sensors.end());
  }
}

class SessionListener;
struct SessionCommand;
class SessionRobot;
struct SessionParts;

/**
 * A robot, simulated, virtual or recorded, and all that can be done with it: see open.h.
 * Poses and positions are in the map: m, rad. What can't be done is a UsageError; what hardware
 * throws passes through. Not copyable. The switches are safe from any thread, all else is for the
 * thread that opened it.
 */
class QV_API Session {
 public:
  /** For those who open sessions. */
  explicit Session(std::unique_ptr<SessionParts> parts);
  /** Lets the robot stand, and stops all sensors. */
  ~Session();
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;

  /** All that there is to see. Never waits for a sensor that is being switched. */
  Snapshot look();
  /** "Virtual robot porter". */
  std::string getTitle() const;
  Math::Pose2D getPose() const;
  /** Null if it has none. */
  boost::shared_ptr<const OccupancyMap> getMap() const;
  /** Of the room that the robot takes, metres. */
  float getRadius() const;
  /** What records place their sensors in. */
  Frame getFrame() const;
  sensor::SensorManager& getManager() const;
  /** Behind which the robot's services are; null if it has none. */
  boost::shared_ptr<QVBroker> getBroker() const;
  /** What its sensors were made from; null if they were not made from any. */
  const Model::Robot* getDescription() const;

  /** Sensors or families, by name; starting hardware takes its time, simulated or not. */
  void subscribe(const std::string& subscriber, const std::set<std::string>& names);
  void unsubscribe(const std::string& subscriber, const std::set<std::string>& names);
  /** A sensor or a family; the records go on or stop with it. */
  void enable(const std::string& name, bool on);
  void diagnose(const std::string& sensor, bool success);
  /**
   * Who wants which sensors from now on, beside those who subscribed above: what differs from
   * before is subscribed or unsubscribed. A sensor whose hardware throws is logged and left out.
   */
  void setDemand(const Demand& demand);

  /** By hand, m/s and rad/s: holds for half a second of the machine's time, see keepPace. */
  void drive(float forward, float turn);
  /** Forward and leftward in m/s, turning in rad/s: holds for so much of ko::Clock's time. */
  void drive(const Math::Pose2D& velocity, ko::Duration hold);
  /** Finds a way there, goes it and waits where something stands in it, at most 15 s. */
  void setGoal(const Math::Position2D& position);
  /**
   * Along straight lines, two positions or more, turning on the spot at corners: m/s and rad/s
   * above 0. Returns the seconds that this takes. A simulated robot is exactly where it has to be,
   * others try; whoever is late is not waited for.
   */
  double follow(const std::vector<Math::Position2D>& path, double speed, double turnSpeed);
  /** It drives about where there is room. */
  void wander();
  void stop();
  /** Puts the robot somewhere else. */
  void setPose(const Math::Pose2D& pose);

  /** The sensors that can be made to fail: none without a virtual robot. */
  std::vector<std::string> getFaultySensors() const;
  /** Without a virtual robot UsageError; else see VirtualRobot. */
  std::vector<robot::FaultKind> getPossibleFaults(const std::string& sensor) const;
  void setFault(const robot::Fault& fault);
  void clearFault(const std::string& sensor);

  /** Lets this much of ko::Clock's time go by, paused or not. */
  void run(ko::Duration duration);
  /** So long after a subscription every sensor has given its first record. */
  ko::Duration getSettlingTime() const;
  /** A recording's next step, false at its end; of others, 0.1 s. */
  bool step();
  /** Of a recording, 0 to 1. */
  double getShareDone() const;
  /** Of a recording; nothing for what is none. */
  std::optional<ko::Duration> getLength() const;
  /**
   * Goes to a time of a recording, from its start: backwards by playing it again from there. Who
   * subscribed beside it has to do so again; setDemand does.
   */
  void seek(ko::Duration sinceStart);

  /** Lets `machine` time's worth go by: nothing while paused, else at the speed that is set. */
  void keepPace(ko::Duration machine);
  void pause(bool on);
  bool isPaused() const;
  /** Seconds for a second of the machine's, above 0. */
  void setSpeed(double speed);

  /** Hears what is so now and all that goes into it from then on; must be removed before it ends.
   */
  void addListener(SessionListener& listener);
  void removeListener(SessionListener& listener);

 private:
  friend SessionRobot& robotOf(Session& session);
  void xAdvance(ko::Clock::time_point end);
  void xTell(const SessionCommand& command) const;
  void xReopen();

  std::unique_ptr<SessionParts> parts;
};

}  // namespace QV::session
