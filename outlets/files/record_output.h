#pragma once

#include <iosfwd>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "platform/math/metrical_data.h"
#include "session/frame.h"
#include "session/internal/nearest_obstacle.h"

namespace QV::outlets {

enum class Format { table, json, csv };

/** The one of `known` that has this name; UsageError for anything else. */
Format parseFormat(const std::string& text,
                   const std::vector<Format>& known = {Format::table, Format::json, Format::csv});

/** The shortest number that reads back as the same float; null if it is not finite. */
nlohmann::ordered_json toJson(float value);
nlohmann::ordered_json toJson(const Math::SensorFieldOfView2D& fieldOfView);

/**
 * A record with its fields by their own names: transforms as 12 numbers by rows, points as objects,
 * the time in integer nanoseconds. `frame` names what the transform places the sensor in.
 */
nlohmann::ordered_json toJson(const Math::MetricalData& record, session::Frame frame);

/** Table: a line per record. JSON: an object per record and line. CSV: a line per point. */
void writeRecords(std::ostream& out, const std::vector<Math::MetricalData>& records, Format format,
                  session::Frame frame);

}  // namespace QV::outlets
