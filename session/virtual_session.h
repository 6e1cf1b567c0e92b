#pragma once

#include <string>

#include "platform/ko/periodic_task.h"
#include "platform/middleware/scoped_module.h"
#include "robot/world/virtual_robot.h"
#include "session/internal/wanderer.h"
#include "session/session.h"

namespace QV::session {

/** A virtual robot in a map, and the library hosted in it as on a robot of one's own. */
class VirtualSession : public Session {
 public:
  /** What building the world throws. */
  VirtualSession(const robot::RobotDescription& description, OccupancyMap map,
                 const robot::WorldOptions& world);

  /** See VirtualRobot. */
  void setFault(const robot::Fault& fault) { robot.setFault(fault); }

  const sensor::NavigationModule& getNavigation() const override { return *navigation; }
  sensor::SensorManager& getManager() override { return navigation->getManager(); }
  boost::shared_ptr<const OccupancyMap> getSharedMap() const override { return map; }
  Math::Pose2D getPose() const override { return robot.getPose(); }
  void setPose(const Math::Pose2D& newPose) override { robot.setPose(newPose); }

  Model::PointMeaning getMeaning(const std::string& sensor) const override;
  std::string getTitle() const override;
  Frame getFrame() const override { return Frame::robot; }
  ko::Duration getSettlingTime() const override;

  std::map<std::string, std::string> getUnbuilt() const override;
  std::string findMissingInput(const std::string& sensor) const override;

  void wander() override;
  void follow(const PathFollower& path, double seconds) override;
  void drive(const Math::Pose2D& velocity) override;
  Math::Pose2D getVelocity() const override { return robot.getVelocity(); }
  float getRadius() const override { return robot.getRadius(); }

  std::map<std::string, Math::Position2D> getTouches() const override;
  std::vector<Math::Position2D> getPeople() const override { return robot.getPeople(); }
  boost::shared_ptr<QVBroker> getBroker() const override { return robot.getBroker(); }

 private:
  const boost::shared_ptr<const OccupancyMap> map;
  robot::VirtualRobot robot;
  const boost::shared_ptr<sensor::NavigationModule> navigation;
  const ScopedModule hosting;
  Wanderer wanderer;
  ko::PeriodicTask wandering;
};

}  // namespace QV::session
