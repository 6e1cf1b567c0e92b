#pragma once

#include <chrono>
#include <memory>
#include <optional>

#include <boost/shared_ptr.hpp>

#include "ros2/link/internal/heard_modules.h"
#include "session/internal/session_robot.h"

namespace QV::ros2 {

/** A robot on a graph. It can be driven; setPose() throws UsageError. */
class HeardSessionRobot : public session::SessionRobot {
 public:
  explicit HeardSessionRobot(HeardPlan plan);
  ~HeardSessionRobot() override;

  sensor::NavigationModule& getNavigation() override { return *navigation; }
  const Model::Robot* getDescription() const override { return &told().getModel(); }
  const Model::SensorKinds& getKinds() const override { return modules->getSensors().getKinds(); }
  boost::shared_ptr<QVBroker> getBroker() const override { return told().getBroker(); }
  std::string getSort() const override { return "heard"; }
  std::string getTitle() const override;
  session::Frame getFrame() const override { return session::Frame::robot; }
  boost::shared_ptr<const OccupancyMap> getMap() const override { return map; }
  Math::Pose2D getPose() const override { return told().getPose(); }
  Math::Pose2D getVelocity() const override { return told().getVelocity(); }
  float getRadius() const override { return 0.25f; }
  ko::Duration getSettlingTime() const override { return boost::chrono::seconds(2); }
  session::DriverPeriods getDriverPeriods() const override {
    return {HeardModules::kTurn, HeardModules::kTurn};
  }

  void setPose(const Math::Pose2D& newPose) override;
  bool canBeMoved() const override { return false; }
  void drive(const Math::Pose2D& velocity) override { modules->drive(velocity); }
  void follow(const session::TimedPath& path, double seconds) override;
  void setListener(session::SessionListener* listener) override { told().setListener(listener); }

  std::optional<ko::Clock::time_point> catchUp() override;
  bool awaitTime(ko::Clock::time_point time) override;

 private:
  using MachineClock = std::chrono::steady_clock;

  void xSkipPause();
  bool xAwait(ko::Clock::time_point time);
  ToldModules& told() const { return modules->getModules(); }

  const std::unique_ptr<HeardModules> modules;
  const boost::shared_ptr<const OccupancyMap> map;
  const boost::shared_ptr<sensor::NavigationModule> navigation;
  const ScopedModule hosting;
  MachineClock::time_point lastRun;
};

}  // namespace QV::ros2
