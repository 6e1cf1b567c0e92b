#include "examples/avoid_obstacles.h"

#include <iostream>

#include <boost/make_shared.hpp>

#include "platform/ko/simulated_time.h"
#include "robot/maps/map_files.h"

int main() {
  using namespace QV;
  ko::SimulatedTime time;
  const auto map = boost::make_shared<OccupancyMap>(robot::loadMap("maps/apartment.yaml"));
  robot::WorldOptions world;
  world.start = {3.0f, 6.3f, 0.0f};  // m, m, rad
  world.rangeNoise = 0.01f;          // m
  robot::VirtualRobot robot("robot/descriptions/porter.urdf", map, world);
  sensor::RealSensorManager manager(robot.getBroker());
  ObstacleAvoider avoider(manager, robot);
  for (int i = 0; i < 600; ++i) {
    avoider.step();
    time.advance(boost::chrono::milliseconds(100));
    const auto pose = robot.getPose();
    if (i % 50 == 0) std::cout << pose.x << ", " << pose.y << ", " << pose.theta << "\n";
  }
  std::cout << robot.getCollisionCount() << " collisions in a minute\n";
}
