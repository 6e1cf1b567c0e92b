#pragma once

#include <iosfwd>

#include "outlets/internal/json_values.h"
#include "platform/math/metrical_data.h"
#include "session/snapshot.h"

namespace QV::outlets {

/**
 * A record with its fields by their own names: transforms as 12 numbers by rows, points as objects,
 * the time in integer nanoseconds. "frame" names what the transform places the sensor in; where
 * that is the robot's, "robotPose" tells where the robot is. Positions in a map that is held
 * shifted are in the coordinates of its file.
 */
Json toJson(const Math::MetricalData& record, const session::Snapshot& snapshot);

/** The line of titles. */
void writeCsvTitles(std::ostream& out);
/** A line for each point, and one for a record without points. */
void writeCsv(std::ostream& out, const Math::MetricalData& record,
              const session::Snapshot& snapshot);

}  // namespace QV::outlets
