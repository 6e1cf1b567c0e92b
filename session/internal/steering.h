#pragma once

#include "platform/api.h"
#include "platform/math/pose2d.h"
#include "session/internal/timed_path.h"

namespace QV::session {

/**
 * Returns the velocity, in the robot's own frame (m/s, rad/s), that takes a wheeled robot from
 * `pose` to the pose of `path` at `seconds` after its start, and on along the path. Call it 50
 * times a second.
 */
QV_API Math::Pose2D steer(const TimedPath& path, double seconds, const Math::Pose2D& pose);

}  // namespace QV::session
