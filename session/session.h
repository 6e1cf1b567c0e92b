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

/** The wishes of subscribers: subscriber to sensors. Whoever is not in it wants nothing. */
using Demand = std::map<std::string, std::set<std::string>>;

/** Adds the wishes of others. */
inline void addDemand(Demand& demand, const Demand& others) {
  for (const auto& [subscriber, sensors] : others) {
    demand[subscriber].insert(sensors.begin(), sensors.end());
  }
}

struct SessionParts;

/**
 * A robot, simulated, virtual or recorded, and all that can be done with it.
 *
 * Open one with the functions of open.h. It is driven, switched, looked at and made to fail in the
 * same way whichever it is; what can't be done with it says so. Time goes by while it is run.
 *
 * - Frames: poses and positions are in the map M. Records are as its manager gives them; getFrame()
 *   says in what they place their sensors.
 * - Units: metres, radians, m/s, rad/s; durations are nanoseconds.
 * - Lifetime: not copyable. The end lets the robot stand and stops all sensors. One session with a
 *   time of its own may live at a time.
 * - Threads: the switches are thread-safe: subscribe, unsubscribe, enable and diagnose. All else is
 *   for the thread that opened it.
 * - Errors: what can't be done is a UsageError; what hardware throws passes through.
 *
 * Drive for a minute and look:
 *
 *     const auto session = QV::session::openVirtual("porter");
 *     session->subscribe("my navigation", {"Sonar", "Laser"});
 *     session->wander();
 *     session->run(seconds(60));
 *     for (const auto& sensor : session->look().sensors)
 *       if (sensor.nearest) std::cout << sensor.name << ": " << *sensor.nearest << " m\n";
 */
class QV_API Session {
 public:
  /** Lets the robot stand, and stops all sensors. */
  ~Session();
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;

  /**
   * Takes a picture of all that there is to see. Never waits for a sensor that is being switched.
   */
  Snapshot look();
  /** The title for people: "Virtual robot porter". */
  std::string getTitle() const;
  Math::Pose2D getPose() const;
  /** The map; null if it has none. */
  boost::shared_ptr<const OccupancyMap> getMap() const;
  /** The radius of the room that the robot takes. */
  float getRadius() const;
  /** The frame that records place their sensors in. */
  Frame getFrame() const;
  sensor::SensorManager& getManager() const;
  /** The broker of the robot's services; null if it has none. */
  boost::shared_ptr<QVBroker> getBroker() const;
  /** The description that its sensors were made from; null if they were not made from any. */
  const Model::Robot* getDescription() const;
  /** The kinds that its description's types stand for. */
  const Model::SensorKinds& getKinds() const;

  /**
   * Subscribes to sensors or families, by name. Starting hardware takes its time, simulated or not.
   */
  void subscribe(const std::string& subscriber, const std::set<std::string>& names);
  void unsubscribe(const std::string& subscriber, const std::set<std::string>& names);
  /** Enables or disables a sensor or a family; the records go on or stop with it. */
  void enable(const std::string& name, bool on);
  void diagnose(const std::string& sensor, bool success);
  /** Sets who wants which sensors from now on, beside those who subscribed above: what differs
   * from before is subscribed or unsubscribed. A sensor whose hardware throws is logged and
   * left out. */
  void setDemand(const Demand& demand);

  /**
   * Drives by hand, m/s and rad/s. Holds for half a second of the machine's time, see keepPace().
   */
  void drive(float forward, float turn);
  /**
   * Drives forward and leftward in m/s, turning in rad/s. Holds for so much of ko::Clock's time.
   */
  void drive(const Math::Pose2D& velocity, ko::Duration hold);
  /** Finds a way there, goes it and waits where something stands in it, at most 15 s. */
  void setGoal(const Math::Position2D& position);
  /** Follows straight lines, two positions or more, turning on the spot at corners: m/s and
   * rad/s above 0. Returns the seconds that this takes. A simulated robot is exactly where it
   * has to be, others try; whoever is late is not waited for. */
  double follow(const std::vector<Math::Position2D>& path, double speed, double turnSpeed);
  /** Drives about where there is room. */
  void wander();
  void stop();
  /** Puts the robot somewhere else. */
  void setPose(const Math::Pose2D& pose);

  /** The sensors that can be made to fail: none without a virtual robot. */
  std::vector<std::string> getFaultySensors() const;
  /** The faults that a sensor can have; see VirtualRobot. UsageError without a virtual robot. */
  std::vector<robot::FaultKind> getPossibleFaults(const std::string& sensor) const;
  void setFault(const robot::Fault& fault);
  void clearFault(const std::string& sensor);

  /** Lets this much of ko::Clock's time go by, paused or not. */
  void run(ko::Duration duration);
  /** The time after a subscription until every sensor has given its first record. */
  ko::Duration getSettlingTime() const;
  /** Takes a recording's next step, and answers false at its end; other sessions go on by 0.1 s. */
  bool step();
  /** The share of a recording that is done, 0 to 1. */
  double getShareDone() const;
  /** The length of a recording; nothing for what is none. */
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
  /** Sets the seconds that go by in a second of the machine's, above 0. */
  void setSpeed(double speed);

 private:
  friend struct SessionParts;
  explicit Session(std::unique_ptr<SessionParts> parts);
  void xAdvance(ko::Clock::time_point end);
  void xReopen();

  std::unique_ptr<SessionParts> parts;
};

}  // namespace QV::session
