#include "session/internal/driver.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "platform/ko/log.h"
#include "platform/navigation/internal/map_shift.h"
#include "session/internal/number_text.h"
#include "session/internal/seconds.h"
#include "session/internal/steering.h"
#include "session/usage_error.h"

namespace QV::session {
namespace {

constexpr double kSpeed = 0.5;
constexpr double kTurnSpeed = 1.0;
// Metres that the way keeps from walls beside the robot's own radius.
constexpr float kMargin = 0.05f;
constexpr float kArrived = 0.05f;
constexpr float kAligned = 0.15f;
// Something may stand in the way: metres behind, and the seconds that it may take.
constexpr float kBehind = 0.25f;
constexpr double kPatience = 15.0;

std::string describe(const Math::Position2D& position, const SessionRobot& robot) {
  const auto map = robot.getMap();
  const MapShift shift = map ? map->getShift() : MapShift();
  return fixed(unshifted(position.x, shift.x), 2) + ", " + fixed(unshifted(position.y, shift.y), 2);
}

}  // namespace

void Driver::drive(float forward, float turn) {
  stop();
  held = kHeld;
  robot.drive({forward, 0.0f, turn});
}

void Driver::drive(const Math::Pose2D& velocity, ko::Duration hold) {
  stop();
  heldUntil = ko::Clock::now() + hold;
  robot.drive(velocity);
}

RouteQuestion Driver::askForRoute(const Math::Position2D& position) const {
  const auto map = robot.getMap();
  if (!map) throw UsageError("goals need a map; this robot has none");
  if (robot.isRecording()) throw UsageError("a recording can't be moved or driven");
  const Math::Position2D from = Math::position2DFromPose2D(robot.getPose());
  return {map, from, position, robot.getRadius() + kMargin};
}

void Driver::setGoal(const Math::Position2D& position) {
  setGoal(position, finder(askForRoute(position), false));
}

void Driver::setGoal(const Math::Position2D& position, const std::vector<Math::Position2D>& route) {
  if (route.empty()) {
    throw UsageError("the robot can't get to " + describe(position, robot) + " m: no free path");
  }
  stop();
  const Math::Position2D& from = route.front();
  if (Math::norm(Math::Position2D(position.x - from.x, position.y - from.y)) < kArrived) return;
  goal = position;
  ko::log::info("Session", "setGoal")
      << "the robot drives to " << describe(position, robot) << " m";
  path.emplace(route, kSpeed, kTurnSpeed);
  done = 0.0;
  waited = 0.0;
}

void Driver::follow(const TimedPath& wanted) {
  stop();
  timedPath = wanted;
  timedStart = ko::Clock::now();
  steer(ko::Duration::zero());
}

void Driver::wander() {
  stop();
  robot.wander(true);
}

void Driver::stop() {
  countOrder();
  xStop();
}

void Driver::xStop() {
  held = ko::Duration::zero();
  heldUntil.reset();
  goal.reset();
  path.reset();
  timedPath.reset();
  robot.wander(false);
  robot.drive({});
}

std::vector<Math::Position2D> Driver::getRoute() const {
  if (path) return path->getRest(done);
  if (timedPath) return timedPath->getRest(inSeconds(ko::Clock::now() - timedStart));
  return {};
}

void Driver::release(ko::Duration machine) {
  if (held == ko::Duration::zero()) return;
  held = std::max(held - machine, ko::Duration::zero());
  if (held == ko::Duration::zero()) robot.drive({});
}

void Driver::steer(ko::Duration simulated) {
  if (heldUntil && ko::Clock::now() >= *heldUntil) xStop();
  if (timedPath) robot.follow(*timedPath, inSeconds(ko::Clock::now() - timedStart));
  if (path) xGoOn(inSeconds(simulated));
}

// First a turn to where the path begins. On the path the robot is waited for.
void Driver::xGoOn(double seconds) {
  const Math::Pose2D off = Math::pinv(robot.getPose()) * path->poseAt(done);
  const float turn = std::remainder(off.theta, 2.0f * std::numbers::pi_v<float>);
  if (done == 0.0 && std::abs(turn) > kAligned) {
    robot.drive({0.0f, 0.0f, std::clamp(3.0f * turn, -1.0f, 1.0f)});
    return;
  }
  const float behind = std::hypot(off.x, off.y);
  const bool atEnd = done >= path->getDuration();
  if (atEnd && behind < kArrived) {
    ko::log::info("Session", "run") << "arrived at " << describe(*goal, robot) << " m";
    return xStop();
  }
  if (atEnd || behind > kBehind) {
    waited += seconds;
    if (waited > kPatience) return xGiveUp();
  } else {
    waited = 0.0;
    done = std::min(done + seconds, path->getDuration());
  }
  robot.drive(QV::session::steer(*path, done, robot.getPose()));
}

void Driver::xGiveUp() {
  ko::log::warning("Session", "run")
      << "the way to " << describe(*goal, robot) << " m stayed blocked for "
      << static_cast<int>(kPatience) << " s: goal dropped";
  xStop();
}

}  // namespace QV::session
