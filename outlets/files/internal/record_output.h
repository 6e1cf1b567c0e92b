#pragma once

#include <iosfwd>
#include <string>
#include <vector>

#include "platform/api.h"
#include "session/snapshot.h"

namespace QV::outlets {

enum class Format { table, json, csv };

/** The one of `known` that has this name; UsageError for anything else. */
QV_API Format parseFormat(const std::string& text, const std::vector<Format>& known = {
                                                       Format::table, Format::json, Format::csv});

/**
 * The records of `sensors`, which `frame` places. Table: a line per record. JSON: an object per
 * record and line. CSV: a line per point.
 */
QV_API void writeRecords(std::ostream& out, const std::vector<session::SensorState>& sensors,
                         Format format, session::Frame frame);

/** The same in pieces, JSON or CSV: what stands before the first, and any number of them. */
QV_API void writeTitles(std::ostream& out, Format format);
QV_API void writeRows(std::ostream& out, const std::vector<session::SensorState>& sensors,
                      Format format, session::Frame frame);

}  // namespace QV::outlets
