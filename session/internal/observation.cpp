#include "session/internal/observation.h"

#include <algorithm>
#include <cmath>

#include "session/internal/number_text.h"
#include "session/internal/place_marks.h"

namespace QV::session {
namespace {

// The cycles without a record that a slightly late sensor may have.
constexpr int kLate = 3;
// A sensor may report a miss by a range beyond its maximum, up to a limit.
constexpr float kReason = 10.0f;
constexpr float kAngleTolerance = 0.01f;

// Cameras also see height, and the projection of a hole may lie outside.
bool isFan(const SensorNature& nature) {
  return nature.points == Model::PointMeaning::scan || nature.points == Model::PointMeaning::arc;
}

std::string findNonsense(const Math::MetricalData& record, const SensorNature& nature) {
  const auto& fov = record.fieldOfView;
  for (const auto& point : record.points) {
    const float range = Math::norm(point);
    if (!std::isfinite(range)) return "a point with NaN or infinite coordinates";
    if (fov.maxRange > 0.0f && range > kReason * fov.maxRange) {
      return "a point at " + shortest(range) + " m, beyond " + shortest(fov.maxRange) + " m";
    }
    const float angle = std::abs(std::atan2(point.y, point.x));
    if (isFan(nature) && angle > 0.5f * fov.angularRange + kAngleTolerance) {
      return "a point outside of its field of view";
    }
  }
  return {};
}

}  // namespace

void Observation::add(const Records& ownRecords) {
  gap = ownRecords.empty() ? gap + 1 : 0;
  if (gap > (records == 0 ? starting : kLate)) longestGap = std::max(longestGap, gap);
  for (const auto& record : ownRecords) xAdd(record);
}

void Observation::xAdd(const Math::MetricalData& record) {
  ++records;
  if (!firstSeen) firstSeen = ko::Clock::now();
  points += record.points.size();
  worstAge = std::max(worstAge, Math::age(record, ko::Clock::now()));
  if (nonsense.empty()) nonsense = findNonsense(record, nature);
  names.insert(record.sensorName);
}

// The floor is the same all around, and "too near" may be, too.
bool showsTurns(const Records& records, const SensorNature& nature) {
  if (nature.looksDown()) return false;
  return std::any_of(records.begin(), records.end(), [&nature](const auto& record) {
    const auto nearest = placeMarks(record, nature.points, {}, Frame::robot).nearest;
    return nearest && *nearest > record.fieldOfView.minRange;
  });
}

bool hasSamePoints(const Records& a, const Records& b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                    [](const auto& one, const auto& other) { return one.points == other.points; });
}

std::string describeTouch(const Observation& seen) {
  if (seen.records == 0) return "nothing touches it";
  std::string text;
  for (const std::string& name : seen.names) text += (text.empty() ? "touched: " : ", ") + name;
  return text;
}

}  // namespace QV::session
