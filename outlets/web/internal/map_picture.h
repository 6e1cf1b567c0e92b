#pragma once

#include <string>

#include "platform/api.h"
#include "platform/navigation/occupancy_map.h"

namespace QV::outlets {

/** A PNG of one grey pixel a cell, the last row on top: 0 solid, 205 unknown, 254 free. */
QV_API std::string makeMapPicture(const OccupancyMap& map);

}  // namespace QV::outlets
