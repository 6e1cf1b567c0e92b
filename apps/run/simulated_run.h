#pragma once

#include <string>

#include "apps/run/robot_run.h"
#include "sensor/simulation/simulated_sensor_manager.h"

namespace QV::app {

/** Simulated sensors of a kind in a map. The robot is where it is put. */
class SimulatedRun : public RobotRun {
 public:
  /** UsageError for a kind without sensors. */
  SimulatedRun(int kind, OccupancyMap map, const Math::Pose2D& start);

  const sensor::NavigationModule& getNavigation() const override { return navigation; }
  sensor::SensorManager& getManager() override { return *manager; }
  const OccupancyMap& getMap() const override { return map; }
  Math::Pose2D getPose() const override { return pose; }
  void setPose(const Math::Pose2D& newPose) override;

  std::string getTitle() const override;
  Frame getFrame() const override { return Frame::map; }
  ko::Duration getSettlingTime() const override { return ko::Duration::zero(); }

  void follow(const PathFollower& path, double seconds) override;

 private:
  const int kind;
  OccupancyMap map;
  const boost::shared_ptr<sensor::SimulatedSensorManager> manager;
  sensor::NavigationModule navigation;
  Math::Pose2D pose;
};

/** UsageError unless there are simulated sensors for `kind`. */
void checkKind(int kind);

}  // namespace QV::app
