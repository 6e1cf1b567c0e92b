#include "session/internal/virtual_session_robot.h"

#include <utility>

#include <boost/make_shared.hpp>

#include "platform/middleware/qv_motion_proxy.h"
#include "session/internal/number_text.h"
#include "session/internal/steering.h"

namespace QV::session {

namespace {

std::map<std::string, std::string> factsOf(const robot::WorldOptions& world) {
  return {{"seed", std::to_string(world.seed)},
          {"range_noise", shortest(world.rangeNoise)},
          {"drop_outs", shortest(world.dropOuts)},
          {"odometry_drift", shortest(world.odometryDrift)},
          {"people", std::to_string(world.people.size())},
          {"random_people", std::to_string(world.randomPeople)}};
}

}  // namespace

VirtualSessionRobot::VirtualSessionRobot(const robot::RobotDescription& description,
                                         boost::shared_ptr<const OccupancyMap> givenMap,
                                         const robot::WorldOptions& world,
                                         const sensor::SensorFactory& sensors,
                                         const robot::UnitFactory& units)
    : kinds(description.kinds),
      periods{world.stepPeriod, world.sonarPeriod},
      worldFacts(factsOf(world)),
      map(std::move(givenMap)),
      robot(description, map, world, nullptr, units),
      navigation(boost::make_shared<sensor::NavigationModule>(robot.getBroker(), sensors)),
      hosting(robot.getBroker(), navigation),
      wanderer(robot.getMap()) {}

std::string VirtualSessionRobot::getTitle() const {
  return "Virtual robot " + robot.getModel().name;
}

// Five cycles of the manager's, and two of the slowest source of records.
ko::Duration VirtualSessionRobot::getSettlingTime() const {
  return boost::chrono::milliseconds(500);
}

void VirtualSessionRobot::wander(bool on) {
  wandering.stop();
  if (!on) return;
  wandering.setName("Wandering");
  wandering.setPeriod(boost::chrono::milliseconds(100));
  wandering.setCallback([this] { drive(wanderer.step(robot.getPose(), robot.getVelocity())); });
  wandering.start(true);
}

void VirtualSessionRobot::follow(const TimedPath& path, double seconds) {
  drive(steer(path, seconds, robot.getPose()));
}

void VirtualSessionRobot::drive(const Math::Pose2D& velocity) {
  robot.setVelocity(velocity.x, velocity.y, velocity.theta);
}

std::map<std::string, Math::Position2D> VirtualSessionRobot::getTouches() const {
  const QVMotionProxy motion(robot.getBroker());
  const Math::Pose2D pose = robot.getPose();
  std::map<std::string, Math::Position2D> touches;
  for (const std::string& group : robot.getTouchedGroups()) {
    const Math::Transform onRobot(motion.getTransform(group, MotionContract::kGroundFrame, true));
    const Math::Position3D position = Math::position3DFromTransform(onRobot);
    touches[group] = pose * Math::Position2D(position.x, position.y);
  }
  return touches;
}

}  // namespace QV::session
