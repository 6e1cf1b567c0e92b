#pragma once

#include <cstddef>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include <boost/shared_ptr.hpp>

#include "platform/api.h"
#include "platform/math/pose2d.h"
#include "platform/middleware/qv_broker.h"
#include "platform/model/robot.h"
#include "platform/navigation/occupancy_map.h"
#include "robot/world/faults/fault.h"
#include "robot/world/robot_description.h"
#include "robot/world/world_options.h"

namespace QV::robot {

struct InputTap;
class RobotWorld;
class UnitFactory;

/**
 * A complete robot in this process: all modules that sensors call, with the names of a real robot,
 * and a body that drives, measures and collides in an occupancy map. Map cells with an occupancy
 * above 0.4 are solid. So are unknown cells: their occupancy is 0.5.
 *
 * It runs by ko::Clock: in real time, or in simulated time if a SimulatedTime is created before it
 * and destroyed after it. In simulated time, runs with the same seed are identical.
 * - Frames: M is the map; R the root link, whose pose in M is the robot's; G the ground frame,
 *   which is R here.
 * - Units: metres, radians, m/s, rad/s; durations are nanoseconds.
 * - Lifetime: not copyable; keeps the map alive. After the robot's end its modules stay registered
 *   and the world stands still. Sonars and the camera still measure it, a laser scans once each
 *   time that it is switched on, and bumpers, blind zones and people give nothing.
 * - Threads: thread-safe.
 * - Errors: std::invalid_argument for an unknown name, and a number out of range or not finite.
 *
 *     ko::SimulatedTime time;
 *     QV::robot::WorldOptions world;
 *     world.start = {3.0f, 6.3f, 0.0f};
 *     QV::robot::VirtualRobot porter("robot/descriptions/porter.urdf", map, world);
 *     porter.setVelocity(0.3f, 0.0f, 0.0f);
 *     time.advance(boost::chrono::seconds(2));
 *     std::cout << porter.getPose().x << " m\n";
 */
class QV_API VirtualRobot {
 public:
  /** Registers the modules with `broker`, or with a new broker for null. Throws QVError if a name
   * is in use there; then no module is registered. */
  VirtualRobot(const RobotDescription& description, boost::shared_ptr<const OccupancyMap> map,
               const WorldOptions& options = {}, boost::shared_ptr<QVBroker> broker = nullptr);
  /** Also takes `units`, which creates the SensorUnits that measure for sensors. Throws
   * std::invalid_argument for a sensor of a type that `units` knows but the description's kinds do
   * not. */
  VirtualRobot(const RobotDescription& description, boost::shared_ptr<const OccupancyMap> map,
               const WorldOptions& options, boost::shared_ptr<QVBroker> broker,
               const UnitFactory& units);
  /** Reads a description's file; see RobotDescription::fromFile. */
  VirtualRobot(const std::string& descriptionPath, boost::shared_ptr<const OccupancyMap> map,
               const WorldOptions& options = {}, boost::shared_ptr<QVBroker> broker = nullptr);
  ~VirtualRobot();
  VirtualRobot(const VirtualRobot&) = delete;
  VirtualRobot& operator=(const VirtualRobot&) = delete;

  const boost::shared_ptr<QVBroker>& getBroker() const { return broker; }
  const Model::Robot& getModel() const;
  const OccupancyMap& getMap() const;
  /** The radius (m) of the upright cylinder that stands for the body in collisions. */
  float getRadius() const;

  /** Drives forward and leftward in m/s, turning in rad/s, in R, from the next step on and until
   * another command. An obstacle stops the driving, not the turning. */
  void setVelocity(float vx, float vy, float omega);
  /** The actual velocity in the last step, in R. */
  Math::Pose2D getVelocity() const;

  Math::Pose2D getPose() const;
  /** Moves the body at once; the odometry does not change. */
  void setPose(const Math::Pose2D& pose);
  /** The pose by odometry, with its drift, relative to the start pose. */
  Math::Pose2D getOdometry() const;

  /** In radians or metres; see MotionService::setJointPositions. */
  void setJointPositions(const std::map<std::string, double>& positions);

  /** The bumpers that are pressed now, by the names of their links. */
  std::set<std::string> getTouchedGroups() const;
  /** How often the body has run into something since the start. */
  std::size_t getCollisionCount() const;
  /** All people in M: first those of the options, then the random ones. */
  std::vector<Math::Position2D> getPeople() const;

  /** Makes a sensor of getFaultySensors() fail from `from` to `to`, counted from the robot's
   * creation. If its faults overlap, the last one set is active. Throws std::invalid_argument for a
   * kind that it cannot have; the text names the possible ones. */
  void setFault(const std::string& sensor, FaultKind kind, ko::Duration from = ko::Duration::zero(),
                ko::Duration to = ko::Duration::max());
  void setFault(const Fault& fault);
  void clearFault(const std::string& sensor);
  /** The faults that were set and not removed, also past ones; by sensor, in the order of
   * setting. */
  std::vector<Fault> getFaults() const;

  /** The fault that a sensor has now, if any. */
  std::optional<FaultKind> findFault(const std::string& sensor) const;

  /** The sensors that can fail, faulty now or not; with a depth camera also "PeoplePerception". */
  std::vector<std::string> getFaultySensors() const;
  std::vector<FaultKind> getPossibleFaults(const std::string& sensor) const;

 private:
  friend struct InputTap;

  const boost::shared_ptr<QVBroker> broker;
  const boost::shared_ptr<RobotWorld> world;
};

}  // namespace QV::robot
