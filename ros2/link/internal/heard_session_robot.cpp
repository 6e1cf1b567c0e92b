#include "ros2/link/internal/heard_session_robot.h"

#include <algorithm>
#include <chrono>
#include <utility>

#include <boost/make_shared.hpp>

#include "ros2/recording/internal/bag_robot.h"
#include "session/internal/steering.h"
#include "session/usage_error.h"

namespace QV::ros2 {
namespace {

// A session that was not run for so long skips the time: messages that came meanwhile are handled
// at once, and would look old at the end of it.
constexpr std::chrono::milliseconds kLongPause{200};
// A clock that does not move for so long stands still.
constexpr std::chrono::milliseconds kStandstill{500};
constexpr std::chrono::milliseconds kLongestGlance{5};

}  // namespace

HeardSessionRobot::HeardSessionRobot(HeardPlan plan)
    : modules(std::make_unique<HeardModules>(std::move(plan))),
      map(modules->getMap() ? modules->getMap() : makeUnknownMap()),
      navigation(
          boost::make_shared<sensor::NavigationModule>(told().getBroker(), modules->getSensors())),
      hosting(told().getBroker(), navigation) {
  modules->obey(&navigation->getManager());
}

HeardSessionRobot::~HeardSessionRobot() {
  modules->obey(nullptr);
}

std::string HeardSessionRobot::getTitle() const {
  return "ROS 2 robot " + told().getModel().name;
}

void HeardSessionRobot::setPose(const Math::Pose2D&) {
  throw session::UsageError("a robot on a ROS 2 graph can't be placed at a pose");
}

void HeardSessionRobot::follow(const session::TimedPath& path, double seconds) {
  drive(session::steer(path, seconds, getPose()));
}

void HeardSessionRobot::xSkipPause() {
  const auto now = MachineClock::now();
  if (now - lastRun < kLongPause) return;
  modules->getTime().begin(ko::Clock::now());
  lastRun = now;
}

std::optional<ko::Clock::time_point> HeardSessionRobot::catchUp() {
  xSkipPause();
  const auto there = modules->getTime().now();
  // Messages are handled only when time advances; otherwise a recording would have them out of
  // order.
  if (there <= ko::Clock::now()) modules->listen();
  return there;
}

bool HeardSessionRobot::awaitTime(ko::Clock::time_point time) {
  xSkipPause();
  const bool hasCome = xAwait(time);
  lastRun = MachineClock::now();
  return hasCome;
}

bool HeardSessionRobot::xAwait(ko::Clock::time_point time) {
  auto last = modules->getTime().now();
  auto moved = MachineClock::now();
  for (auto now = last; now < time; now = modules->getTime().now()) {
    if (now > last) moved = MachineClock::now();
    if (MachineClock::now() - moved > kStandstill) {
      modules->listen();
      return false;
    }
    last = now;
    const std::chrono::nanoseconds left((time - now).count());
    modules->await(std::min<std::chrono::nanoseconds>(left, kLongestGlance));
  }
  return true;
}

}  // namespace QV::ros2
