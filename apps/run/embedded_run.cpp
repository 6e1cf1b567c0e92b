#include "apps/run/embedded_run.h"

#include <boost/make_shared.hpp>

#include "apps/run/steering.h"
#include "robot/world/map_files.h"

namespace QV::app {

EmbeddedRun::EmbeddedRun(const std::string& descriptionPath, const std::string& mapPath,
                         const robot::WorldOptions& world, const std::vector<robot::Fault>& faults)
    : robot(descriptionPath, boost::make_shared<OccupancyMap>(robot::loadMap(mapPath)), world),
      navigation(boost::make_shared<sensor::NavigationModule>(robot.getBroker())),
      hosting(robot.getBroker(), navigation) {
  for (const auto& fault : faults) robot.setFault(fault);
}

std::string EmbeddedRun::getTitle() const {
  return "Embedded robot " + robot.getModel().name;
}

// Five cycles of the manager's, and two of the slowest source of records.
ko::Duration EmbeddedRun::getSettlingTime() const {
  return boost::chrono::milliseconds(500);
}

void EmbeddedRun::follow(const PathFollower& path, double seconds) {
  const Math::Pose2D velocity = steer(path, seconds, robot.getPose());
  robot.setVelocity(velocity.x, velocity.y, velocity.theta);
}

}  // namespace QV::app
