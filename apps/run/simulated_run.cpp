#include "apps/run/simulated_run.h"

#include <utility>

#include <boost/make_shared.hpp>

#include "apps/run/path_follower.h"
#include "apps/usage_error.h"
#include "platform/ko/log.h"

namespace QV::app {

SimulatedRun::SimulatedRun(int kind, OccupancyMap givenMap, const Math::Pose2D& start)
    : kind(kind),
      map((checkKind(kind), std::move(givenMap))),
      manager(boost::make_shared<sensor::SimulatedSensorManager>(kind, &map)),
      navigation(manager) {
  SimulatedRun::setPose(start);
}

std::string SimulatedRun::getTitle() const {
  return "Simulated robot of kind " + std::to_string(kind);
}

void SimulatedRun::follow(const PathFollower& path, double seconds) {
  setPose(path.poseAt(seconds));
}

// Records then carry the pose that rays are cast from.
void SimulatedRun::setPose(const Math::Pose2D& newPose) {
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
