#pragma once

#include <cmath>
#include <cstdint>
#include <limits>

namespace QV::Math {

/** Returns the value truncated towards zero; saturates at 32 bits; 0 for NaN. */
inline std::int32_t truncated(float value) {
  if (std::isnan(value)) return 0;
  if (value >= 2147483648.0f) return std::numeric_limits<std::int32_t>::max();
  if (value <= -2147483648.0f) return std::numeric_limits<std::int32_t>::min();
  return static_cast<std::int32_t>(value);
}

}  // namespace QV::Math
