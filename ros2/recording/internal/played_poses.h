#pragma once

#include "ros2/recording/internal/played_robot.h"
#include "sensor/simulation/simulated_sensor_manager.h"

namespace QV::ros2 {

/** Simulated sensors, whose records follow from the map and from where the robot was. */
class PlayedPoses : public PlayedRobot {
 public:
  explicit PlayedPoses(std::unique_ptr<SessionReader> reader);

  sensor::NavigationModule& getNavigation() override { return navigation; }

 private:
  void xMoveTo(const Math::Pose2D& newPose) override;

  const boost::shared_ptr<sensor::SimulatedSensorManager> manager;
  sensor::NavigationModule navigation;
};

}  // namespace QV::ros2
