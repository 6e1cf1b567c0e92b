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
 * A whole robot in this process: every service that sensors call, under its real name, and a body
 * that drives, measures and bumps in an occupancy map.
 *
 * It runs on ko::Clock: on the machine's, or on a SimulatedTime that was there before it and ends
 * after it; then a seed makes each session the same.
 *
 * - Frames: M is the map; R the root link, whose pose in M is the robot's; G the ground frame,
 *   which is R here. Cells above 0.4, unknown ones too, are solid.
 * - Units: metres, radians, m/s, rad/s; durations are nanoseconds.
 * - Lifetime: not copyable; keeps the map alive. When it ends, its services stay with the broker,
 *   so that who still uses them may end later. The world then stands still: sonars and the camera
 *   go on measuring it, a laser scans once more whenever it is switched on, and bumpers, blind
 *   zones and people fall silent.
 * - Threads: thread-safe.
 * - Errors: what is not finite, out of range or of an unknown name throws std::invalid_argument.
 *
 * Two seconds of driving, in no time:
 *
 *     ko::SimulatedTime time;
 *     QV::robot::WorldOptions world;
 *     world.start = {3.0f, 6.3f, 0.0f};
 *     QV::robot::VirtualRobot porter("robot/descriptions/porter.urdf", map, world);
 *     porter.setVelocity(0.3f, 0.0f, 0.0f);
 *     time.advance(seconds(2));
 *     std::cout << porter.getPose().x << " m\n";
 */
class QV_API VirtualRobot {
 public:
  /** Makes a robot of a description. Its services go to `broker`, a new one if there is none; a
   * name in use there: QVError. */
  VirtualRobot(const RobotDescription& description, boost::shared_ptr<const OccupancyMap> map,
               const WorldOptions& options = {}, boost::shared_ptr<QVBroker> broker = nullptr);
  /** Makes a robot whose sensors are measured by what `units` makes. A sensor of a type that
   * `units` knows and the description's kinds do not: std::invalid_argument. Whatever throws
   * leaves nothing with the broker. */
  VirtualRobot(const RobotDescription& description, boost::shared_ptr<const OccupancyMap> map,
               const WorldOptions& options, boost::shared_ptr<QVBroker> broker,
               const UnitFactory& units);
  /** Makes a robot of a description in a file; see RobotDescription::fromFile. */
  VirtualRobot(const std::string& descriptionPath, boost::shared_ptr<const OccupancyMap> map,
               const WorldOptions& options = {}, boost::shared_ptr<QVBroker> broker = nullptr);
  ~VirtualRobot();
  VirtualRobot(const VirtualRobot&) = delete;
  VirtualRobot& operator=(const VirtualRobot&) = delete;

  const boost::shared_ptr<QVBroker>& getBroker() const { return broker; }
  const Model::Robot& getModel() const;
  const OccupancyMap& getMap() const;
  /** The radius of the upright cylinder that the body is for what stands in its way. */
  float getRadius() const;

  /** Drives forward and leftward in m/s, turning in rad/s, in R, from the next step on and until
   * another command. What the body would run into stops it, not its turning. */
  void setVelocity(float vx, float vy, float omega);
  /** The velocity of the last step in R: what the body really does. */
  Math::Pose2D getVelocity() const;

  /** The pose of R in M, as of the last step. */
  Math::Pose2D getPose() const;
  /** Puts the body somewhere else; the odometry does not notice. */
  void setPose(const Math::Pose2D& pose);
  /** The pose that the wheels tell, seen from where the robot started. */
  Math::Pose2D getOdometry() const;

  /** Sets positions of joints, radians or metres; see MotionService::setJointPositions. */
  void setJointPositions(const std::map<std::string, double>& positions);

  /** The touch groups that are pressed now. */
  std::set<std::string> getTouchedGroups() const;
  /** The number of times that the body has run into something since the start. */
  std::size_t getCollisionCount() const;
  /** The people in M: those of the options, then the random ones. */
  std::vector<Math::Position2D> getPeople() const;

  /**
   * Makes a sensor fail from `from` to `to`, counted since this robot was made. A name is one of
   * getFaultySensors(). Where faults of a sensor overlap, the one that was set last counts. A kind
   * that makes no sense for it throws std::invalid_argument, which says which kinds do.
   */
  void setFault(const std::string& sensor, FaultKind kind, ko::Duration from = ko::Duration::zero(),
                ko::Duration to = ko::Duration::max());
  void setFault(const Fault& fault);
  /** Takes back all faults of a sensor. */
  void clearFault(const std::string& sensor);
  /** The faults that were set and not taken back, over or not; those of a sensor in the order in
   * which they were set. */
  std::vector<Fault> getFaults() const;

  /** The fault that a sensor suffers now; nothing while it is sound. */
  std::optional<FaultKind> findFault(const std::string& sensor) const;

  /** The sensors that are measured, and "PeoplePerception" with a depth camera. */
  std::vector<std::string> getFaultySensors() const;
  std::vector<FaultKind> getPossibleFaults(const std::string& sensor) const;

 private:
  friend struct InputTap;

  const boost::shared_ptr<QVBroker> broker;
  const boost::shared_ptr<RobotWorld> world;
};

}  // namespace QV::robot
