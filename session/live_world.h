#pragma once

#include <map>
#include <string>

#include "platform/ko/simulated_time.h"
#include "session/command.h"
#include "session/internal/demand_keeper.h"
#include "session/internal/driver.h"
#include "session/internal/pacing.h"
#include "session/internal/sensor_look.h"
#include "session/session.h"
#include "session/snapshot.h"

namespace QV::session {

/**
 * A robot that is looked at and driven while simulated time goes by. For the thread that owns the
 * time; the robot and the time must outlive it.
 */
class LiveWorld {
 public:
  LiveWorld(Session& robot, ko::SimulatedTime& time);
  /** Unsubscribes from everything, and lets the robot stand. */
  ~LiveWorld();
  LiveWorld(const LiveWorld&) = delete;
  LiveWorld& operator=(const LiveWorld&) = delete;

  /**
   * What can't be done is a UsageError; what hardware throws passes through. Starting hardware may
   * take simulated time, paused or not.
   */
  void execute(const Command& command);
  /** Who wants which sensors beside those that were subscribed to by command. */
  void setDemand(const Demand& wanted) { demand.set(wanted); }

  /** Lets the world go on while `machine` time goes by. */
  void run(ko::Duration machine);

  Snapshot look();
  /** False for an unknown sensor. */
  bool isStarted(const std::string& sensor) const { return manager.isSensorStarted(sensor); }

 private:
  struct Touch {
    Math::Position2D position;
    ko::Clock::time_point began;
    ko::Clock::time_point last;
  };

  void xDo(const SubscribeCommand& command);
  void xDo(const EnableCommand& command);
  void xDo(const DiagnoseCommand& command);
  void xDo(const DriveCommand& command);
  void xDo(const GoalCommand& command);
  void xDo(const StopCommand& command);
  void xDo(const PauseCommand& command);
  void xDo(const StepCommand& command);
  void xDo(const SpeedCommand& command);

  /** In the log, for people: a sensor's or family's name, and what was done to it. */
  void xTell(const std::string& name, const std::string& what) const;
  void xAdvance(ko::Duration simulated);
  void xNoteTouches();

  Session& robot;
  ko::SimulatedTime& time;
  sensor::SensorManager& manager;
  Driver driver;
  DemandKeeper demand;
  Pacing pacing;
  SensorLook sensorLook;
  std::map<std::string, Touch> touches;
};

}  // namespace QV::session
