#pragma once

#include <map>
#include <string>

#include "platform/ko/periodic_task.h"
#include "platform/middleware/qv_broker.h"
#include "robot/world/units/unit_factory.h"
#include "robot/world/virtual_robot.h"
#include "sensor/real/sensor_factory.h"
#include "session/internal/session_listener.h"
#include "session/internal/session_robot.h"
#include "session/internal/wanderer.h"

namespace QV::session {

/** A virtual robot in a map, with the library hosted in it as on a real robot. */
class VirtualSessionRobot : public SessionRobot {
 public:
  /** Builds the world, and throws its exceptions. */
  VirtualSessionRobot(const robot::RobotDescription& description,
                      boost::shared_ptr<const OccupancyMap> map, const robot::WorldOptions& world,
                      const sensor::SensorFactory& sensors = sensor::SensorFactory::standard(),
                      const robot::UnitFactory& units = robot::UnitFactory::standard());

  sensor::NavigationModule& getNavigation() override { return *navigation; }
  const Model::Robot* getDescription() const override { return &robot.getModel(); }
  const Model::SensorKinds& getKinds() const override { return kinds; }
  boost::shared_ptr<const OccupancyMap> getMap() const override { return map; }
  Math::Pose2D getPose() const override { return robot.getPose(); }
  void setPose(const Math::Pose2D& newPose) override { robot.setPose(newPose); }

  std::string getSort() const override { return "virtual"; }
  std::string getTitle() const override;
  Frame getFrame() const override { return Frame::robot; }
  ko::Duration getSettlingTime() const override;

  void wander(bool on) override;
  void follow(const TimedPath& path, double seconds) override;
  void drive(const Math::Pose2D& velocity) override;
  Math::Pose2D getVelocity() const override { return robot.getVelocity(); }
  float getRadius() const override { return robot.getRadius(); }

  std::map<std::string, Math::Position2D> getTouches() const override;
  std::vector<Math::Position2D> getPeople() const override { return robot.getPeople(); }
  boost::shared_ptr<QVBroker> getBroker() const override { return robot.getBroker(); }
  DriverPeriods getDriverPeriods() const override { return periods; }
  robot::VirtualRobot* getVirtualRobot() override { return &robot; }
  std::map<std::string, std::string> getWorldFacts() const override { return worldFacts; }
  void setListener(SessionListener* listener) override { robot::InputTap::set(robot, listener); }

 private:
  const Model::SensorKinds kinds;
  const DriverPeriods periods;
  const std::map<std::string, std::string> worldFacts;
  const boost::shared_ptr<const OccupancyMap> map;
  robot::VirtualRobot robot;
  const boost::shared_ptr<sensor::NavigationModule> navigation;
  const ScopedModule hosting;
  Wanderer wanderer;
  ko::PeriodicTask wandering;
};

}  // namespace QV::session
