#pragma once

#include <string>

#include "platform/api.h"

namespace QV::ros2 {

/**
 * A robot's description in the shapes that viewers know: of each capsule a cylinder and two
 * spheres, the same body. Any other is given back as it is.
 */
QV_API std::string describeForViewers(const std::string& urdf);

}  // namespace QV::ros2
