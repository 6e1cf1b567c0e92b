#include "session/internal/steering.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace QV::session {
namespace {

constexpr float kPeriod = 0.02f;
constexpr float kMostOff = 0.3f;

float wrapped(float angle) {
  return std::remainder(angle, 2.0f * std::numbers::pi_v<float>);
}

float limited(float metres) {
  return std::clamp(metres, -kMostOff, kMostOff);
}

}  // namespace

// The command is the path's velocity plus a share of the error: ahead, to the side and in heading.
Math::Pose2D steer(const TimedPath& path, double seconds, const Math::Pose2D& pose) {
  const Math::Pose2D wanted = path.poseAt(seconds);
  const Math::Pose2D planned = Math::pinv(wanted) * path.poseAt(seconds + kPeriod);
  const Math::Pose2D off = Math::pinv(pose) * wanted;
  const float forward = planned.x / kPeriod + 2.0f * limited(off.x);
  // Standing, no turn brings it back to the side.
  const float towards = 2.0f * limited(off.y) * std::clamp(5.0f * forward, -1.0f, 1.0f);
  const float eagerness = 4.0f + 2.0f * std::abs(forward);
  const float turn = wrapped(planned.theta) / kPeriod + eagerness * (wrapped(off.theta) + towards);
  return {forward, 0.0f, turn};
}

}  // namespace QV::session
