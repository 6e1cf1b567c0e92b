#pragma once

#include <iosfwd>
#include <optional>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "apps/output/frame.h"
#include "platform/math/metrical_data.h"

namespace QV::app {

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
nlohmann::ordered_json toJson(const Math::MetricalData& record, Frame frame);

/** The point nearest to the sensor that is nearer than the maximum range, metres; or nothing. */
std::optional<float> nearestObstacle(const Math::MetricalData& record);

/** Table: a line per record. JSON: an object per record and line. CSV: a line per point. */
void writeRecords(std::ostream& out, const std::vector<Math::MetricalData>& records, Format format,
                  Frame frame);

}  // namespace QV::app
