#include "session/drive.h"

#include <algorithm>
#include <cmath>

namespace QV::session {
namespace {

constexpr double kSteeringPeriod = 0.02;

ko::Duration inTime(double seconds) {
  return ko::Duration(std::llround(1e9 * seconds));
}

}  // namespace

Drive::Drive(const PathFollower& path, Session& robot, ko::SimulatedTime& time)
    : path(path), robot(robot), time(time), start(ko::Clock::now()) {}

void Drive::goOnTo(double end) {
  while (seconds < end) {
    robot.follow(path, seconds);
    seconds = std::min(end, seconds + kSteeringPeriod);
    // What fell due may have slept beyond that.
    time.advanceTo(std::max(start + inTime(seconds), ko::Clock::now()));
  }
  robot.follow(path, end);
}

}  // namespace QV::session
