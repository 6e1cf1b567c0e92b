#include "outlets/files/internal/record_output.h"

#include <optional>
#include <ostream>
#include <utility>

#include "outlets/files/internal/record_text.h"
#include "outlets/files/internal/table.h"
#include "platform/navigation/internal/map_shift.h"
#include "session/internal/number_text.h"
#include "session/usage_error.h"

namespace QV::outlets {
namespace {

const char* getName(Format format) {
  static const char* const names[] = {"table", "json", "jsonl", "csv"};
  return names[static_cast<int>(format)];
}

const std::vector<std::string> kColumns{"sensor",    "family", ">points", ">nearest", ">range",
                                        ">aperture", ">at x",  ">y",      ">z",       ">time s"};

std::vector<std::string> rowOf(const Math::MetricalData& record, std::optional<float> nearest,
                               const MapShift& shift) {
  const auto at = Math::position3DFromTransform(record.sensorTransform);
  const auto& fov = record.fieldOfView;
  const auto seconds = static_cast<double>(inNanoseconds(record.timestamp)) * 1e-9;
  return {record.sensorName,
          record.familyName,
          std::to_string(record.points.size()),
          nearest ? session::fixed(*nearest, 3) : "-",
          session::shortest(fov.minRange) + ".." + session::shortest(fov.maxRange),
          session::fixed(fov.angularRange, 2),
          session::fixed(unshifted(at.x, shift.x), 2),
          session::fixed(unshifted(at.y, shift.y), 2),
          session::fixed(at.z, 2),
          session::fixed(seconds, 3)};
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

RecordWriter::RecordWriter(std::ostream& out, Format format)
    : out(out), format(format), list(out, format) {
  if (format == Format::csv) writeCsvTitles(out);
}

void RecordWriter::write(const session::Snapshot& snapshot) {
  frame = snapshot.frame;
  const MapShift shift = frame == session::Frame::map ? snapshot.getShift() : MapShift();
  for (const auto& sensor : session::sensorsByName(snapshot)) {
    for (const auto& record : sensor.records) {
      if (format == Format::table) rows.push_back(rowOf(record, sensor.nearest, shift));
      if (format == Format::csv) writeCsv(out, record, snapshot);
      list.add(toJson(record, snapshot));
    }
  }
}

void RecordWriter::addSilent(const SilentSensor& sensor) {
  hasSilent = true;
  const std::vector<std::string> noValues(kColumns.size() - 2, "-");
  auto& row = rows.emplace_back(std::vector<std::string>{sensor.name, sensor.family});
  row.insert(row.end(), noValues.begin(), noValues.end());
  row.push_back(sensor.why);
}

void RecordWriter::finish(std::size_t columns) {
  list.finish();
  if (format != Format::table) return;
  out << "Positions of the sensors in the "
      << (frame == session::Frame::map ? "map frame" : "robot's ground frame")
      << " (m).\nRanges in m, angles in rad.\n";
  auto titles = kColumns;
  if (hasSilent) titles.push_back("no record, because");
  Table table(titles);
  for (auto& row : std::exchange(rows, {})) table.add(std::move(row));
  table.dropFirst({"family", "time s", "aperture", "range", "z", "y", "at x"});
  table.print(out, columns);
  hasSilent = false;
}

}  // namespace QV::outlets
