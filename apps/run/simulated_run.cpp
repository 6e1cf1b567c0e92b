#include "apps/run/simulated_run.h"

#include <boost/make_shared.hpp>

#include "apps/run/path_follower.h"
#include "apps/usage_error.h"
#include "platform/ko/log.h"
#include "robot/world/map_files.h"

namespace QV::app {

SimulatedRun::SimulatedRun(int kind, const std::string& mapPath, const Math::Pose2D& start)
    : kind(kind),
      map((checkKind(kind), robot::loadMap(mapPath))),
      manager(boost::make_shared<sensor::SimulatedSensorManager>(kind, &map)),
      navigation(manager) {
  xSetPose(start);
}

std::string SimulatedRun::getTitle() const {
  return "Simulated robot of kind " + std::to_string(kind);
}

void SimulatedRun::follow(const PathFollower& path, double seconds) {
  xSetPose(path.poseAt(seconds));
}

// Records then carry the pose that rays are cast from.
void SimulatedRun::xSetPose(const Math::Pose2D& newPose) {
  pose = newPose;
  manager->setPose2D(pose, pose);
}

void checkKind(int kind) {
  // The catalogue's own line would be a second one beside ours.
  ko::log::setLevel("RobotModelMock", ko::log::Level::silent);
  const bool known = !sensor::RobotModelMock().getSimulatedSensors(kind).empty();
  ko::log::resetLevel("RobotModelMock");
  if (known) return;
  throw UsageError("--kind: a kind with simulated sensors (-1, 0 or 1) expected, " +
                   std::to_string(kind) + " given");
}

}  // namespace QV::app
