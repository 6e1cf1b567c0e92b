#pragma once

#include <iosfwd>
#include <optional>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "platform/math/metrical_data.h"

namespace QV::app {

enum class Format { table, json, csv };

/** "table", "json" or "csv"; UsageError for anything else. */
Format parseFormat(const std::string& text);

/**
 * A record with its fields by their own names: transforms as 12 numbers by rows, points as objects,
 * the time in integer nanoseconds; a float as the shortest number that reads back, one that is not
 * finite as null. `frame` names what the transform places the sensor in.
 */
nlohmann::ordered_json toJson(const Math::MetricalData& record, const std::string& frame);

/** The point nearest to the sensor that is nearer than the maximum range, metres; or nothing. */
std::optional<float> nearestObstacle(const Math::MetricalData& record);

/** Table: a line per record. JSON: an object per record and line. CSV: a line per point. */
void writeRecords(std::ostream& out, const std::vector<Math::MetricalData>& records, Format format,
                  const std::string& frame);

}  // namespace QV::app
