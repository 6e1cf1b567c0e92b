#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "platform/api.h"
#include "platform/ko/clock.h"
#include "platform/math/pose2d.h"
#include "platform/math/position.h"
#include "platform/math/sensor_field_of_view_2d.h"
#include "platform/navigation/occupancy_map.h"
#include "sensor/core/sensor_health.h"

/** The parts that the JSON of all outlets is made of. Numbers that are not finite are null. */
namespace QV::outlets {

using Json = nlohmann::ordered_json;

/** Writes it on one line; bytes that are no UTF-8, as a log may hold, are replaced. */
QV_API std::string toText(const Json& message);

/** The shortest number that reads back as the same float. */
QV_API Json toJson(float value);
/** A position in a map that is held shifted, in the coordinates of its file to a millimetre. */
QV_API Json toJson(float value, double shift);
QV_API Json toJson(const Math::SensorFieldOfView2D& fieldOfView);
/** Rounds to a millimetre, a milliradian, a millisecond. */
Json rounded(double value);

/** x, y, theta by their names. */
QV_API Json exactPoseOf(const Math::Pose2D& pose, const MapShift& shift = {});
Json roundedPoseOf(const Math::Pose2D& pose, const MapShift& shift = {});
/** [x, y] of each, rounded. */
Json pairsOf(const std::vector<Math::Position2D>& positions, const MapShift& shift = {});

/** state, reason, remedy, since (seconds ago) and times. */
QV_API Json toJson(const sensor::SensorHealth& health);

std::int64_t inNanoseconds(ko::Clock::time_point time);

}  // namespace QV::outlets
