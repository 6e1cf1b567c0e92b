#pragma once

#include <iosfwd>
#include <string>
#include <vector>

#include "outlets/internal/json_list.h"
#include "platform/api.h"
#include "session/snapshot.h"

namespace QV::outlets {

/** The one of `known` that has this name; UsageError for anything else. */
QV_API Format parseFormat(const std::string& text,
                          const std::vector<Format>& known = {Format::table, Format::json,
                                                              Format::jsonl, Format::csv});

/** A sensor that gave no record, and why. */
struct QV_API SilentSensor {
  std::string name;
  std::string family;
  std::string why;
};

/**
 * Records as text. Table: a line per record. JSON: an array with an object per record. JSON lines:
 * an object per line. CSV: a line per point. For one thread; `out` must outlive it.
 */
class QV_API RecordWriter {
 public:
  RecordWriter(std::ostream& out, Format format);

  /** Writes records in the order of the sensors' names. */
  void write(const session::Snapshot& snapshot);
  /** Stands in a table; other formats hold records alone. */
  void addSilent(const SilentSensor& sensor);
  /** Writes a table, or the end of an array; the next record begins a new one. */
  void finish(std::size_t columns = 0);

 private:
  std::ostream& out;
  const Format format;
  JsonList list;
  session::Frame frame = session::Frame::map;
  std::vector<std::vector<std::string>> rows;
  bool hasSilent = false;
};

}  // namespace QV::outlets
