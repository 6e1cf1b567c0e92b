#pragma once

#include <cstddef>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include <boost/shared_ptr.hpp>

#include "platform/ko/periodic_task.h"
#include "platform/middleware/qv_module.h"
#include "robot/services/device_manager.h"
#include "robot/services/video_device.h"
#include "robot/world/robot_description.h"
#include "robot/world/scene/body.h"
#include "robot/world/scene/crowd.h"
#include "robot/world/units/blind_zone_unit.h"
#include "robot/world/units/laser_units.h"
#include "robot/world/units/people_unit.h"
#include "robot/world/units/touch_units.h"
#include "robot/world/units/unit_context.h"

namespace QV::robot {

/**
 * What an VirtualRobot is made of. A module, "VirtualRobot", so that the broker keeps it as long
 * as its services: "setVelocity" (vx, vy, omega) and "getPose" ([x, y, theta]) are the robot's.
 */
class RobotWorld : public QVModule {
 public:
  struct State {
    Math::Pose2D pose;
    Math::Pose2D velocity;
    Math::Pose2D odometry;
    /** Where the body touches something, in the root link's frame. */
    std::optional<float> contact;
    std::set<std::string> touched;
    std::size_t collisionCount = 0;
    People people;
  };

  RobotWorld(const RobotDescription& description, boost::shared_ptr<const OccupancyMap> map,
             const WorldOptions& options, const boost::shared_ptr<QVBroker>& broker);
  ~RobotWorld() override;

  /** The first step is made before this returns. */
  void start();
  /** Waits for a step that runs. */
  void stop();

  const Model::Robot& getModel() const { return model; }
  const OccupancyMap& getMap() const { return context.surroundings->getScene().getMap(); }
  const BodySize& getBodySize() const { return bodySize; }
  FaultPlan& getFaults() { return *faults; }
  State getState() const;

  void setVelocity(const Math::Pose2D& velocity);
  void setPose(const Math::Pose2D& pose);
  void setJointPositions(const std::map<std::string, double>& positions);

 private:
  void xRegisterServices(const RobotDescription& description,
                         const boost::shared_ptr<QVBroker>& broker);
  void xSetOdometryErrors();
  void xAddCameras(VideoDevice& video);
  void xAddBlindZones();
  void xStep();
  State xMove(ko::Clock::time_point now);

  /** Says when something that is done once a period is due. */
  struct Beat {
    const ko::Duration period;
    ko::Clock::time_point next = ko::Clock::time_point();

    bool isDue(ko::Clock::time_point now);
  };

  const Model::Robot model;
  const boost::shared_ptr<MotionService> motion;
  const boost::shared_ptr<DeviceManager> devices;
  const boost::shared_ptr<FaultPlan> faults;
  const UnitContext context;
  TouchUnits touch;
  LaserUnits lasers;
  std::vector<std::unique_ptr<BlindZoneUnit>> blindZones;
  std::unique_ptr<PeopleUnit> peopleUnit;

  const BodySize bodySize;
  mutable std::mutex mutex;
  Body body;
  Crowd crowd;
  State state;
  ko::Clock::time_point steppedAt;
  Beat laserBeat;
  Beat blindZoneBeat;
  Beat peopleBeat;
  ko::PeriodicTask task;
};

}  // namespace QV::robot
