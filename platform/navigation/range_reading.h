#pragma once

#include <cstdint>

#include "platform/api.h"

namespace QV {

/** What one ray of a scan met. */
struct QV_API RangeReading {
  /** Metres along the ray. */
  float range = 0.0f;
  /** Radians, relative to the heading of the pose that the scan was cast from. */
  float angle = 0.0f;
  /** 0 for a hit, 1 for a miss. */
  std::int32_t status = 0;

  friend bool operator==(const RangeReading&, const RangeReading&) = default;
};

}  // namespace QV
