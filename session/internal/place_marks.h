#pragma once

#include <optional>

#include "platform/api.h"
#include "platform/math/metrical_data.h"
#include "platform/math/pose2d.h"
#include "platform/model/sensor_kind.h"
#include "session/snapshot.h"

namespace QV::session {

/**
 * Returns the pose in the map of a record's sensor, for a robot at `robot`. Simulated fans look
 * ahead.
 */
QV_API Math::Pose2D findOrigin(const Math::MetricalData& record, const Math::Pose2D& robot,
                               Frame frame);

/**
 * Places a record's points, which mean `meaning`, in the map, for a robot that was at `robot`. A
 * point at or beyond the maximum range, or a point that is not finite, is never a hit.
 */
QV_API Marks placeMarks(const Math::MetricalData& record, Model::PointMeaning meaning,
                        const Math::Pose2D& robot, Frame frame);

/** Adds the marks of another record of the same sensor. */
void addMarks(Marks& marks, const Marks& others);

}  // namespace QV::session
