#include "outlets/files/record_output.h"

#include <charconv>
#include <cmath>
#include <ostream>

#include "outlets/files/internal/table.h"
#include "session/internal/number_text.h"
#include "session/usage_error.h"

namespace QV::outlets {
namespace {

using nlohmann::ordered_json;

const char* getName(Format format) {
  static const char* const names[] = {"table", "json", "csv"};
  return names[static_cast<int>(format)];
}

void writeTable(std::ostream& out, const std::vector<Math::MetricalData>& records,
                session::Frame frame) {
  out << "Places: sensors in the " << getName(frame)
      << "'s frame (x y z in m). Ranges in m, angles in rad.\n";
  Table table({"sensor", "family", ">points", ">nearest", ">range", ">aperture", ">at x", ">y",
               ">z", ">time s"});
  for (const auto& record : records) {
    const auto nearest = session::nearestObstacle(record);
    const auto at = Math::position3DFromTransform(record.sensorTransform);
    const auto& fov = record.fieldOfView;
    const auto seconds = static_cast<double>(record.timestamp.time_since_epoch().count()) * 1e-9;
    table.add({record.sensorName, record.familyName, std::to_string(record.points.size()),
               nearest ? session::fixed(*nearest, 3) : "-",
               session::shortest(fov.minRange) + ".." + session::shortest(fov.maxRange),
               session::fixed(fov.angularRange, 2), session::fixed(at.x, 2),
               session::fixed(at.y, 2), session::fixed(at.z, 2), session::fixed(seconds, 3)});
  }
  table.print(out);
}

std::string quoted(const std::string& text) {
  std::string result(1, '"');
  for (const char c : text) result.append(c == '"' ? 2 : 1, c);
  result.push_back('"');
  return result;
}

void writeCsv(std::ostream& out, const std::vector<Math::MetricalData>& records,
              session::Frame frame) {
  out << "sensorName,familyName,frame,minRange,maxRange,angularRange,rayCount,timestamp";
  for (int i = 0; i < 12; ++i) out << ",t" << i / 4 << i % 4;
  out << ",point,x,y,z\n";
  for (const auto& record : records) {
    const auto& fov = record.fieldOfView;
    std::string start = quoted(record.sensorName) + "," + quoted(record.familyName) + "," +
                        getName(frame) + "," + session::shortest(fov.minRange) + "," +
                        session::shortest(fov.maxRange) + "," +
                        session::shortest(fov.angularRange) + "," + std::to_string(fov.rayCount) +
                        "," + std::to_string(record.timestamp.time_since_epoch().count());
    for (const float value : record.sensorTransform.values)
      start.append(",").append(session::shortest(value));
    if (record.points.empty()) out << start << ",,,,\n";
    for (std::size_t i = 0; i < record.points.size(); ++i) {
      const auto& point = record.points[i];
      out << start << ',' << i << ',' << session::shortest(point.x) << ','
          << session::shortest(point.y) << ',' << session::shortest(point.z) << '\n';
    }
  }
}

}  // namespace

Format parseFormat(const std::string& text, const std::vector<Format>& known) {
  std::string names;
  for (const Format format : known) {
    if (text == getName(format)) return format;
    names.append(names.empty() ? "" : format == known.back() ? " or " : ", ");
    names.append(getName(format));
  }
  throw session::UsageError("--format: " + names + " expected, \"" + text + "\" given");
}

ordered_json toJson(float value) {
  if (!std::isfinite(value)) return nullptr;
  const std::string text = session::shortest(value);
  double result = 0.0;
  std::from_chars(text.data(), text.data() + text.size(), result);
  return result;
}

ordered_json toJson(const Math::SensorFieldOfView2D& fieldOfView) {
  return {{"minRange", toJson(fieldOfView.minRange)},
          {"maxRange", toJson(fieldOfView.maxRange)},
          {"angularRange", toJson(fieldOfView.angularRange)},
          {"rayCount", fieldOfView.rayCount}};
}

ordered_json toJson(const Math::MetricalData& record, session::Frame frame) {
  ordered_json transform = ordered_json::array();
  for (const float value : record.sensorTransform.values) transform.push_back(toJson(value));
  ordered_json points = ordered_json::array();
  for (const auto& point : record.points) {
    points.push_back({{"x", toJson(point.x)}, {"y", toJson(point.y)}, {"z", toJson(point.z)}});
  }
  return {{"sensorName", record.sensorName},
          {"familyName", record.familyName},
          {"fieldOfView", toJson(record.fieldOfView)},
          {"sensorTransform", transform},
          {"points", points},
          {"timestamp", record.timestamp.time_since_epoch().count()},
          {"frame", getName(frame)}};
}

void writeRecords(std::ostream& out, const std::vector<Math::MetricalData>& records, Format format,
                  session::Frame frame) {
  switch (format) {
    case Format::table:
      writeTable(out, records, frame);
      break;
    case Format::csv:
      writeCsv(out, records, frame);
      break;
    case Format::json:
      for (const auto& record : records) out << toJson(record, frame) << '\n';
      break;
  }
}

}  // namespace QV::outlets
