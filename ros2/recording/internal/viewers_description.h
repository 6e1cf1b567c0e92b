#pragma once

#include <functional>
#include <string>

#include "platform/api.h"

namespace QV::ros2 {

/** Returns the other name of a link, or the same. */
using LinkNames = std::function<std::string(const std::string& link)>;

/**
 * A robot's description in the shapes that viewers know: of each capsule a cylinder and two
 * spheres, the same body; and with other names of links, if `nameOf` gives any. Any other is given
 * back as it is.
 */
QV_API std::string describeForViewers(const std::string& urdf, const LinkNames& nameOf = {});

}  // namespace QV::ros2
