#include "outlets/files/internal/record_output.h"

#include <optional>
#include <ostream>

#include "outlets/files/internal/record_text.h"
#include "outlets/files/internal/table.h"
#include "session/internal/number_text.h"
#include "session/usage_error.h"

namespace QV::outlets {
namespace {

const char* getName(Format format) {
  static const char* const names[] = {"table", "json", "csv"};
  return names[static_cast<int>(format)];
}

std::vector<std::string> rowOf(const Math::MetricalData& record, std::optional<float> nearest) {
  const auto at = Math::position3DFromTransform(record.sensorTransform);
  const auto& fov = record.fieldOfView;
  const auto seconds = static_cast<double>(inNanoseconds(record.timestamp)) * 1e-9;
  return {record.sensorName,
          record.familyName,
          std::to_string(record.points.size()),
          nearest ? session::fixed(*nearest, 3) : "-",
          session::shortest(fov.minRange) + ".." + session::shortest(fov.maxRange),
          session::fixed(fov.angularRange, 2),
          session::fixed(at.x, 2),
          session::fixed(at.y, 2),
          session::fixed(at.z, 2),
          session::fixed(seconds, 3)};
}

void writeTable(std::ostream& out, const std::vector<session::SensorState>& sensors,
                session::Frame frame) {
  out << "Places: sensors in the " << getName(frame)
      << "'s frame (x y z in m). Ranges in m, angles in rad.\n";
  Table table({"sensor", "family", ">points", ">nearest", ">range", ">aperture", ">at x", ">y",
               ">z", ">time s"});
  for (const auto& sensor : sensors) {
    for (const auto& record : sensor.records) table.add(rowOf(record, sensor.nearest));
  }
  table.print(out);
}

void writeRecord(std::ostream& out, const Math::MetricalData& record, Format format,
                 session::Frame frame) {
  if (format == Format::csv) return writeCsv(out, record, frame);
  out << toText(toJson(record, frame)) << '\n';
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

void writeRecords(std::ostream& out, const std::vector<session::SensorState>& sensors,
                  Format format, session::Frame frame) {
  if (format == Format::table) return writeTable(out, sensors, frame);
  writeTitles(out, format);
  writeRows(out, sensors, format, frame);
}

void writeTitles(std::ostream& out, Format format) {
  if (format == Format::csv) writeCsvTitles(out);
}

void writeRows(std::ostream& out, const std::vector<session::SensorState>& sensors, Format format,
               session::Frame frame) {
  for (const auto& sensor : sensors) {
    for (const auto& record : sensor.records) writeRecord(out, record, format, frame);
  }
}

}  // namespace QV::outlets
