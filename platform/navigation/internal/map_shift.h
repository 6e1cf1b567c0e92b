#pragma once

#include "platform/navigation/occupancy_map.h"

namespace QV {

inline bool isShifted(const MapShift& shift) {
  return shift.x != 0.0 || shift.y != 0.0;
}

/** A coordinate in a map that is held shifted, in the coordinates of its file. */
inline double unshifted(float value, double shift) {
  // Zero plus -0 is 0.
  return shift == 0.0 ? static_cast<double>(value) : shift + static_cast<double>(value);
}

}  // namespace QV
