#include "session/internal/timed_path.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "session/internal/number_text.h"
#include "session/usage_error.h"

namespace QV::session {
namespace {

void checkPath(const std::vector<Math::Position2D>& path, double speed, double turnSpeed) {
  const auto isFinite = [](const Math::Position2D& position) {
    return std::isfinite(position.x) && std::isfinite(position.y);
  };
  if (path.size() < 2 || !std::all_of(path.begin(), path.end(), isFinite))
    throw UsageError("a path of two finite positions or more expected");
  if (!(speed > 0.0) || !(turnSpeed > 0.0))
    throw UsageError("speeds above 0 m/s and 0 rad/s expected, " + shortest(speed) + " and " +
                     shortest(turnSpeed) + " given");
}

}  // namespace

TimedPath::TimedPath(const std::vector<Math::Position2D>& path, double speed, double turnSpeed) {
  checkPath(path, speed, turnSpeed);
  for (std::size_t i = 0; i + 1 < path.size(); ++i) {
    const float dx = path[i + 1].x - path[i].x;
    const float dy = path[i + 1].y - path[i].y;
    float heading = std::atan2(dy, dx);
    if (!legs.empty()) {
      const Math::Pose2D before = legs.back().to;
      const float turn = std::remainder(heading - before.theta, 2.0f * std::numbers::pi_v<float>);
      heading = before.theta + turn;
      const Math::Pose2D after(before.x, before.y, heading);
      if (turn != 0.0f) xAdd(before, after, std::abs(turn) / turnSpeed);
    }
    xAdd(Math::Pose2D(path[i].x, path[i].y, heading),
         Math::Pose2D(path[i + 1].x, path[i + 1].y, heading), std::hypot(dx, dy) / speed);
  }
}

void TimedPath::xAdd(const Math::Pose2D& from, const Math::Pose2D& to, double seconds) {
  const double start = legs.empty() ? 0.0 : legs.back().end;
  legs.push_back({from, to, start, start + seconds});
}

Math::Pose2D TimedPath::poseAt(double seconds) const {
  const auto leg = std::find_if(legs.begin(), legs.end() - 1, [seconds](const Leg& candidate) {
    return seconds < candidate.end;
  });
  const double done = std::clamp((seconds - leg->start) / (leg->end - leg->start), 0.0, 1.0);
  const auto between = [done](float from, float to) {
    return static_cast<float>(from + done * (static_cast<double>(to) - from));
  };
  return {between(leg->from.x, leg->to.x), between(leg->from.y, leg->to.y),
          between(leg->from.theta, leg->to.theta)};
}

std::vector<Math::Position2D> TimedPath::getRest(double seconds) const {
  std::vector<Math::Position2D> rest = {Math::position2DFromPose2D(poseAt(seconds))};
  for (const Leg& leg : legs) {
    const Math::Position2D end = Math::position2DFromPose2D(leg.to);
    if (leg.end > seconds && end != rest.back()) rest.push_back(end);
  }
  return rest;
}

}  // namespace QV::session
