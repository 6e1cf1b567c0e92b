#pragma once

#include "platform/api.h"
#include "platform/math/pose2d.h"
#include "session/internal/timed_path.h"

namespace QV::session {

/**
 * The velocity, in its own frame (m/s, rad/s), that takes a wheeled robot at `pose` to where `path`
 * is `seconds` after its start, and on with it. To be asked 50 times a second.
 */
QV_API Math::Pose2D steer(const TimedPath& path, double seconds, const Math::Pose2D& pose);

}  // namespace QV::session
