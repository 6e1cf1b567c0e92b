#pragma once

#include <memory>
#include <string>

#include "platform/api.h"
#include "platform/ko/periodic_task.h"
#include "sensor/simulation/simulated_sensor_manager.h"
#include "session/internal/route_cells.h"
#include "session/internal/session_robot.h"

namespace QV::session {

/**
 * Simulated sensors of a kind in a map. The robot is where it is put; driven, it stops before what
 * is not free. For the thread that time goes by on.
 */
class SimulatedSessionRobot : public SessionRobot {
 public:
  /** Throws UsageError for a kind without sensors. */
  SimulatedSessionRobot(int kind, boost::shared_ptr<OccupancyMap> map, const Math::Pose2D& start);

  sensor::NavigationModule& getNavigation() override { return navigation; }
  boost::shared_ptr<const OccupancyMap> getMap() const override { return map; }
  Math::Pose2D getPose() const override { return pose; }
  void setPose(const Math::Pose2D& newPose) override;

  std::string getSort() const override { return "simulated " + std::to_string(kind); }
  std::string getTitle() const override;
  Frame getFrame() const override { return Frame::map; }

  void follow(const TimedPath& path, double seconds) override;
  void drive(const Math::Pose2D& velocity) override;
  Math::Pose2D getVelocity() const override { return velocity; }
  float getRadius() const override { return 0.25f; }

 private:
  void xMove();

  const int kind;
  const boost::shared_ptr<OccupancyMap> map;
  const boost::shared_ptr<sensor::SimulatedSensorManager> manager;
  sensor::NavigationModule navigation;
  Math::Pose2D pose;
  Math::Pose2D command;
  Math::Pose2D velocity;
  /** Null until the robot first drives. */
  std::unique_ptr<RouteCells> room;
  ko::PeriodicTask driving;
};

/** Throws UsageError if there are no simulated sensors for `kind`. */
QV_API void checkKind(int kind);

}  // namespace QV::session
