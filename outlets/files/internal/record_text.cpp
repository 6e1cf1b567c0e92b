#include "outlets/files/internal/record_text.h"

#include <ostream>

#include "session/internal/number_text.h"

namespace QV::outlets {
namespace {

std::string quoted(const std::string& text) {
  std::string result(1, '"');
  for (const char c : text) result.append(c == '"' ? 2 : 1, c);
  result.push_back('"');
  return result;
}

/** The shift of the number `index` of a sensor's transform; the translation has one in a map. */
double shiftOf(std::size_t index, const session::Snapshot& snapshot) {
  if (snapshot.frame != session::Frame::map) return 0.0;
  return index == 3 ? snapshot.getShift().x : index == 7 ? snapshot.getShift().y : 0.0;
}

// Returns the beginning of every line of a record.
std::string startOf(const Math::MetricalData& record, const session::Snapshot& snapshot) {
  const auto& fov = record.fieldOfView;
  std::string start =
      quoted(record.sensorName) + "," + quoted(record.familyName) + "," + getName(snapshot.frame);
  for (const float value : {fov.minRange, fov.maxRange, fov.angularRange}) {
    start.append(",").append(session::shortest(value));
  }
  start.append(",").append(std::to_string(fov.rayCount));
  start.append(",").append(std::to_string(inNanoseconds(record.timestamp)));
  const auto& transform = record.sensorTransform.values;
  for (std::size_t i = 0; i < transform.size(); ++i) {
    start.append(",").append(session::shortest(transform[i], shiftOf(i, snapshot)));
  }
  return start;
}

}  // namespace

Json toJson(const Math::MetricalData& record, const session::Snapshot& snapshot) {
  Json transform = Json::array();
  for (const float value : record.sensorTransform.values) {
    transform.push_back(toJson(value, shiftOf(transform.size(), snapshot)));
  }
  Json points = Json::array();
  for (const auto& point : record.points) {
    points.push_back({{"x", toJson(point.x)}, {"y", toJson(point.y)}, {"z", toJson(point.z)}});
  }
  Json object{{"sensorName", record.sensorName},
              {"familyName", record.familyName},
              {"fieldOfView", toJson(record.fieldOfView)},
              {"sensorTransform", std::move(transform)},
              {"points", std::move(points)},
              {"timestamp", inNanoseconds(record.timestamp)},
              {"frame", getName(snapshot.frame)}};
  if (snapshot.frame == session::Frame::robot)
    object["robotPose"] = exactPoseOf(snapshot.pose, snapshot.getShift());
  return object;
}

void writeCsvTitles(std::ostream& out) {
  out << "sensorName,familyName,frame,minRange,maxRange,angularRange,rayCount,timestamp";
  for (int i = 0; i < 12; ++i) out << ",t" << i / 4 << i % 4;
  out << ",point,x,y,z\n";
}

void writeCsv(std::ostream& out, const Math::MetricalData& record,
              const session::Snapshot& snapshot) {
  const std::string start = startOf(record, snapshot);
  if (record.points.empty()) out << start << ",,,,\n";
  for (std::size_t i = 0; i < record.points.size(); ++i) {
    const auto& point = record.points[i];
    out << start << ',' << i << ',' << session::shortest(point.x) << ','
        << session::shortest(point.y) << ',' << session::shortest(point.z) << '\n';
  }
}

}  // namespace QV::outlets
