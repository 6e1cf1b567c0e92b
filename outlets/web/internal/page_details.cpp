#include "outlets/web/internal/page_details.h"

#include <algorithm>
#include <vector>

#include "outlets/files/internal/record_text.h"
#include "outlets/internal/seen_places.h"
#include "platform/navigation/internal/map_shift.h"

namespace QV::outlets {
namespace {

Json shortened(Math::MetricalData record, const session::Snapshot& snapshot) {
  const std::size_t count = record.points.size();
  record.points.resize(std::min(count, kMostRecordPoints));
  Json json = QV::outlets::toJson(record, snapshot);
  json["pointCount"] = count;
  return json;
}

Json numbersOf(const std::vector<Math::Position3D>& places, const MapShift& shift) {
  const std::size_t step = (places.size() + kMostSpacePoints - 1) / kMostSpacePoints;
  Json numbers = Json::array();
  for (std::size_t i = 0; i < places.size(); i += step) {
    numbers.push_back(rounded(unshifted(places[i].x, shift.x)));
    numbers.push_back(rounded(unshifted(places[i].y, shift.y)));
    numbers.push_back(rounded(places[i].z));
  }
  return numbers;
}

}  // namespace

std::string recordMessage(const std::string& sensor, const session::Snapshot& snapshot) {
  const auto found =
      std::find_if(snapshot.sensors.begin(), snapshot.sensors.end(),
                   [&sensor](const session::SensorState& other) { return other.name == sensor; });
  if (found == snapshot.sensors.end()) return {};
  Json records = Json::array();
  for (const auto& record : found->records) records.push_back(shortened(record, snapshot));
  return toText({{"op", "record"}, {"sensor", sensor}, {"records", std::move(records)}});
}

std::string spaceMessage(const session::Snapshot& snapshot) {
  Json sensors = Json::array();
  for (const session::SensorState& sensor : snapshot.sensors) {
    Json points = numbersOf(seenPlacesOf(sensor.marks), snapshot.getShift());
    if (points.empty()) continue;
    sensors.push_back(
        {{"name", sensor.name}, {"family", sensor.family}, {"points", std::move(points)}});
  }
  return toText({{"op", "space"}, {"sensors", std::move(sensors)}});
}

}  // namespace QV::outlets
