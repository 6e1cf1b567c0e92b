#include "outlets/internal/json_values.h"

#include <charconv>
#include <cmath>

#include "platform/navigation/internal/map_shift.h"
#include "session/internal/number_text.h"

namespace QV::outlets {

std::string toText(const Json& message) {
  return message.dump(-1, ' ', false, Json::error_handler_t::replace);
}

Json toJson(float value) {
  if (!std::isfinite(value)) return nullptr;
  const std::string text = session::shortest(value);
  double result = 0.0;
  std::from_chars(text.data(), text.data() + text.size(), result);
  return result;
}

Json toJson(float value, double shift) {
  return shift == 0.0 ? toJson(value) : rounded(unshifted(value, shift));
}

Json toJson(const Math::SensorFieldOfView2D& fieldOfView) {
  return {{"minRange", toJson(fieldOfView.minRange)},
          {"maxRange", toJson(fieldOfView.maxRange)},
          {"angularRange", toJson(fieldOfView.angularRange)},
          {"rayCount", fieldOfView.rayCount}};
}

Json rounded(double value) {
  if (!std::isfinite(value)) return nullptr;
  return std::round(value * 1000.0) / 1000.0;
}

Json exactPoseOf(const Math::Pose2D& pose, const MapShift& shift) {
  return {{"x", toJson(pose.x, shift.x)},
          {"y", toJson(pose.y, shift.y)},
          {"theta", toJson(pose.theta)}};
}

Json roundedPoseOf(const Math::Pose2D& pose, const MapShift& shift) {
  return {{"x", rounded(unshifted(pose.x, shift.x))},
          {"y", rounded(unshifted(pose.y, shift.y))},
          {"theta", rounded(pose.theta)}};
}

Json pairsOf(const std::vector<Math::Position2D>& positions, const MapShift& shift) {
  Json pairs = Json::array();
  for (const auto& position : positions) {
    pairs.push_back(
        {rounded(unshifted(position.x, shift.x)), rounded(unshifted(position.y, shift.y))});
  }
  return pairs;
}

Json toJson(const sensor::SensorHealth& health) {
  const auto age = boost::chrono::duration<double>(ko::Clock::now() - health.since);
  return {{"state", getName(health.state)},
          {"reason", health.reason},
          {"remedy", health.remedy},
          {"since", rounded(age.count())},
          {"times", health.times}};
}

std::int64_t inNanoseconds(ko::Clock::time_point time) {
  return time.time_since_epoch().count();
}

}  // namespace QV::outlets
