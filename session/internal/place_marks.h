#pragma once

#include <optional>

#include "platform/api.h"
#include "platform/math/metrical_data.h"
#include "platform/math/pose2d.h"
#include "platform/model/sensor_kind.h"
#include "session/snapshot.h"

namespace QV::session {

/**
 * Returns where a record's sensor is in the map, for a robot at `robot`. Simulated fans look ahead.
 */
QV_API Math::Pose2D findOrigin(const Math::MetricalData& record, const Math::Pose2D& robot,
                               Frame frame);

/**
 * Places what a record says, for points that mean `meaning`, and a robot that was at `robot`. What
 * is at the maximum range or beyond is never a hit, nor is what is not finite.
 */
QV_API Marks placeMarks(const Math::MetricalData& record, Model::PointMeaning meaning,
                        const Math::Pose2D& robot, Frame frame);

/** Adds those of another record of the same sensor. */
void addMarks(Marks& marks, const Marks& others);

}  // namespace QV::session
