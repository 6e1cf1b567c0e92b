#pragma once

#include <map>
#include <string>

#include "sensor/core/sensor_manager.h"
#include "session/internal/observation.h"
#include "session/internal/session_robot.h"
#include "session/session.h"

namespace QV::session {

/** The robot or manager whose sensors are checked; some parts may be unknown. */
class CheckTarget {
 public:
  CheckTarget() = default;
  virtual ~CheckTarget() = default;
  CheckTarget(const CheckTarget&) = delete;
  CheckTarget& operator=(const CheckTarget&) = delete;

  virtual sensor::SensorManager& getManager() = 0;
  virtual SensorNature getNature(const std::string& sensor) = 0;
  virtual void wait(ko::Duration duration) = 0;
  /** The time that a sound sensor may take to its first record. */
  virtual ko::Duration getStartingTime() const { return boost::chrono::milliseconds(500); }
  virtual bool canTurn() const { return false; }
  /** Turns on the spot, radians. */
  virtual void turn(float) {}
  /** Finds the sensor's last error since `start`; empty if there is none. */
  std::string findTrouble(const std::string& sensor, ko::Clock::time_point start);
  /** Finds a memory key that the sensor reads and nobody writes, with the error; empty if none. */
  virtual std::string findMissing(const std::string&) { return {}; }
  /** Finds the described sensors that do not exist: their families by name. */
  virtual std::map<std::string, std::string> findUnbuilt() { return {}; }
};

/** A manager; its robot is unknown. */
class ManagerTarget : public CheckTarget {
 public:
  ManagerTarget(sensor::SensorManager& manager, const Model::SensorKinds& kinds)
      : manager(manager), kinds(kinds) {}

  sensor::SensorManager& getManager() override { return manager; }
  SensorNature getNature(const std::string& sensor) override;
  void wait(ko::Duration duration) override;

 private:
  sensor::SensorManager& manager;
  const Model::SensorKinds& kinds;
};

/** A session's robot. */
class SessionTarget : public CheckTarget {
 public:
  explicit SessionTarget(Session& session);

  sensor::SensorManager& getManager() override { return robot.getManager(); }
  SensorNature getNature(const std::string& sensor) override;
  void wait(ko::Duration duration) override { session.run(duration); }
  ko::Duration getStartingTime() const override;
  bool canTurn() const override { return robot.canBeMoved(); }
  void turn(float angle) override;
  std::string findMissing(const std::string& sensor) override;
  std::map<std::string, std::string> findUnbuilt() override;

 private:
  Session& session;
  SessionRobot& robot;
};

}  // namespace QV::session
