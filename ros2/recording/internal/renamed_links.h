#pragma once

#include <tinyxml2.h>

#include "ros2/recording/internal/viewers_description.h"

namespace QV::ros2 {

/** Renames the links of a description wherever it names them; returns true if any has changed. */
bool renameLinks(tinyxml2::XMLElement& robot, const LinkNames& nameOf);

}  // namespace QV::ros2
