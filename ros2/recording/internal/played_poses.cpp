#include "ros2/recording/internal/played_poses.h"

#include <charconv>
#include <stdexcept>
#include <utility>

#include <boost/make_shared.hpp>

#include "session/internal/simulated_session_robot.h"

namespace QV::ros2 {
namespace {

int kindOf(const RecordingFacts& facts) {
  const std::string text = facts.sort.substr(facts.sort.find(' ') + 1);
  int kind = 0;
  std::from_chars(text.data(), text.data() + text.size(), kind);
  session::checkKind(kind);
  return kind;
}

OccupancyMap* mapOf(const SessionReader& reader) {
  if (reader.getMap()) return reader.getMap().get();
  throw std::runtime_error("a map expected in the recording of a simulated robot, there is none");
}

}  // namespace

PlayedPoses::PlayedPoses(std::unique_ptr<SessionReader> given)
    : PlayedRobot(std::move(given)),
      manager(boost::make_shared<sensor::SimulatedSensorManager>(kindOf(getReader().getFacts()),
                                                                 mapOf(getReader()))),
      navigation(manager) {}

void PlayedPoses::xMoveTo(const Math::Pose2D& newPose) {
  PlayedRobot::xMoveTo(newPose);
  manager->setPose2D(newPose, newPose);
}

}  // namespace QV::ros2
