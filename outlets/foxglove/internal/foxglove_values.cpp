#include "outlets/foxglove/internal/foxglove_values.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace QV::outlets::foxglove {
namespace {

constexpr std::int64_t kNanosecondsPerSecond = 1'000'000'000;

}  // namespace

Json toJson(ko::Clock::time_point time) {
  const std::int64_t count = std::max<std::int64_t>(inNanoseconds(time), 0);
  return {{"sec", count / kNanosecondsPerSecond}, {"nsec", count % kNanosecondsPerSecond}};
}

Json positionOf(const Math::Pose2D& pose) {
  return {{"x", pose.x}, {"y", pose.y}, {"z", 0.0}};
}

Json turnOf(const Math::Pose2D& pose) {
  return {{"x", 0.0}, {"y", 0.0}, {"z", std::sin(pose.theta / 2)}, {"w", std::cos(pose.theta / 2)}};
}

Json toJson(const Math::Pose2D& pose) {
  return {{"position", positionOf(pose)}, {"orientation", turnOf(pose)}};
}

}  // namespace QV::outlets::foxglove
