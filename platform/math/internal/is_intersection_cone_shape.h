#pragma once

#include "platform/api.h"
#include "platform/math/position.h"
#include "platform/math/shape3d.h"
#include "platform/math/transform.h"

namespace QV::Math {

/**
 * True if a solid cone and a solid shape share a point; one inside the other counts. The cone opens
 * from `apex` along `axis` (any length but 0) by `halfAperture` (radians, from 0 to below pi/2). It
 * ends in a flat disc `length` metres (above 0) from the apex. `placement` places the shape in the
 * frame of `apex` and `axis`. Bodies less than 0.1 mm from touching may be answered either way. An
 * unsupported shape, and an argument that is not finite or describes no such cone, shape or rigid
 * transform, throws std::invalid_argument. Thread-safe.
 */
QV_API bool isIntersectionConeShape(const Position3D& apex, const Position3D& axis,
                                    float halfAperture, const Shape3D& shape,
                                    const Transform& placement, float length);

}  // namespace QV::Math
