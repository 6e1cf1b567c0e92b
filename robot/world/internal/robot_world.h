#pragma once

#include <atomic>
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
#include "robot/services/internal/input_listener.h"
#include "robot/services/internal/motion_service.h"
#include "robot/world/internal/unit_schedule.h"
#include "robot/world/robot_description.h"
#include "robot/world/scene/internal/body.h"
#include "robot/world/scene/internal/crowd.h"
#include "robot/world/units/internal/unit_parts.h"
#include "robot/world/units/unit_factory.h"

namespace QV::robot {

class VideoDevice;

/**
 * The parts of a VirtualRobot: a body and people that move in a scene, and units that measure it.
 * It is a module, "VirtualRobot", so that the broker keeps it as long as its services:
 * "setVelocity" (vx, vy, omega) and "getPose" ([x, y, theta]) are the robot's.
 */
class RobotWorld : public QVModule {
 public:
  struct State {
    Math::Pose2D pose;
    Math::Pose2D velocity;
    Math::Pose2D odometry;
    std::size_t collisionCount = 0;
    People people;
  };

  RobotWorld(const RobotDescription& description, boost::shared_ptr<const OccupancyMap> map,
             const WorldOptions& options, const boost::shared_ptr<QVBroker>& broker,
             const UnitFactory& factory);
  ~RobotWorld() override;

  /** Makes the first step before it returns. */
  void start();
  /** Waits for a running step. */
  void stop();

  const Model::Robot& getModel() const { return model; }
  const OccupancyMap& getMap() const { return context.getSurroundings().getMap(); }
  const BodySize& getBodySize() const { return bodySize; }
  FaultPlan& getFaults() { return UnitParts::of(context).faults; }
  State getState() const;
  std::set<std::string> getTouched() const { return context.getSurroundings().getTouched(); }

  void setVelocity(const Math::Pose2D& velocity);
  void setPose(const Math::Pose2D& pose);
  void setJointPositions(const std::map<std::string, double>& positions) {
    motion->setJointPositions(positions);
  }

  /** Sets the listener: it gets the present state, then all measurements. It must outlive that;
   * null removes it. */
  void setListener(InputListener* newListener);

 private:
  void xBindMethods();
  void xSetOdometryErrors();
  void xMakeUnits(const RobotDescription& description, const boost::shared_ptr<QVBroker>& broker,
                  const UnitFactory& factory);
  void xStep();
  Math::Pose2D xMove(ko::Clock::time_point now);
  BodyStep xGetStep() const;

  const Model::Robot model;
  const boost::shared_ptr<MotionService> motion;
  const UnitContext context;
  std::unique_ptr<UnitSchedule> units;
  boost::shared_ptr<VideoDevice> cameras;
  std::atomic<InputListener*> listener{nullptr};

  const BodySize bodySize;
  mutable std::mutex mutex;
  Body body;
  Crowd crowd;
  State state;
  ko::Clock::time_point steppedAt;
  ko::PeriodicTask task;
};

}  // namespace QV::robot
