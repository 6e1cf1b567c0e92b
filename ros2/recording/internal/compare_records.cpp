#include "ros2/recording/internal/compare_records.h"

#include <algorithm>
#include <bit>
#include <cstdint>
#include <map>

#include "session/internal/number_text.h"

namespace QV::ros2 {
namespace {

using Records = std::vector<Math::MetricalData>;

std::string toText(float number) {
  return session::shortest(number);
}
std::string toText(const std::string& text) {
  return '"' + text + '"';
}
template <typename Number>
std::string toText(Number number) {
  return std::to_string(number);
}

bool isSame(float a, float b) {
  return std::bit_cast<std::uint32_t>(a) == std::bit_cast<std::uint32_t>(b);
}
template <typename Value>
bool isSame(const Value& a, const Value& b) {
  return a == b;
}

/** Keeps the first difference. */
class Comparison {
 public:
  Comparison(const std::string& sensor, ko::Clock::time_point time) : sensor(sensor), time(time) {}

  template <typename Value>
  void compare(const std::string& field, const Value& recorded, const Value& played) {
    if (found || isSame(recorded, played)) return;
    found = RecordDifference{sensor, time, field, toText(recorded), toText(played)};
  }

  void compare(const Math::MetricalData& recorded, const Math::MetricalData& played) {
    compare("sensorName", recorded.sensorName, played.sensorName);
    compare("familyName", recorded.familyName, played.familyName);
    compare("timestamp", recorded.timestamp.time_since_epoch().count(),
            played.timestamp.time_since_epoch().count());
    xCompare(recorded.fieldOfView, played.fieldOfView);
    for (std::size_t i = 0; i < recorded.sensorTransform.values.size(); ++i) {
      compare("sensorTransform[" + std::to_string(i) + "]", recorded.sensorTransform.values[i],
              played.sensorTransform.values[i]);
    }
    compare("points", recorded.points.size(), played.points.size());
    for (std::size_t i = 0; i < recorded.points.size() && !found; ++i)
      xCompare(i, recorded.points[i], played.points[i]);
  }

  std::optional<RecordDifference> found;

 private:
  void xCompare(const Math::SensorFieldOfView2D& recorded,
                const Math::SensorFieldOfView2D& played) {
    compare("fieldOfView.minRange", recorded.minRange, played.minRange);
    compare("fieldOfView.maxRange", recorded.maxRange, played.maxRange);
    compare("fieldOfView.angularRange", recorded.angularRange, played.angularRange);
    compare("fieldOfView.rayCount", recorded.rayCount, played.rayCount);
  }

  void xCompare(std::size_t index, const Math::Position3D& recorded,
                const Math::Position3D& played) {
    if (isSame(recorded.x, played.x) && isSame(recorded.y, played.y) &&
        isSame(recorded.z, played.z))
      return;
    const std::string point = "points[" + std::to_string(index) + "].";
    compare(point + "x", recorded.x, played.x);
    compare(point + "y", recorded.y, played.y);
    compare(point + "z", recorded.z, played.z);
  }

  const std::string sensor;
  const ko::Clock::time_point time;
};

std::map<std::string, std::vector<const Math::MetricalData*>> bySensor(const Records& records) {
  std::map<std::string, std::vector<const Math::MetricalData*>> sorted;
  for (const auto& record : records) sorted[record.sensorName].push_back(&record);
  return sorted;
}

}  // namespace

std::optional<RecordDifference> findDifference(const Records& recorded, const Records& played,
                                               ko::Clock::time_point time) {
  const auto was = bySensor(recorded);
  auto is = bySensor(played);
  for (const auto& [sensor, records] : was) {
    Comparison comparison(sensor, time);
    const auto& others = is[sensor];
    comparison.compare("records", records.size(), others.size());
    for (std::size_t i = 0; i < records.size() && !comparison.found; ++i)
      comparison.compare(*records[i], *others[i]);
    if (comparison.found) return comparison.found;
  }
  for (const auto& [sensor, records] : is) {
    if (was.count(sensor) == 0 && !records.empty())
      return RecordDifference{sensor, time, "records", "0", std::to_string(records.size())};
  }
  return std::nullopt;
}

}  // namespace QV::ros2
