#pragma once

#include <cstdint>

#include "platform/api.h"

namespace QV::Math {

/**
 * A sensor's field of view in the plane, about the x axis of its frame S: it covers angles from
 * -angularRange / 2 to angularRange / 2, at ranges from minRange to maxRange.
 *
 *     const QV::Math::SensorFieldOfView2D laser(0.05f, 5.0f, 1.05f, 61);
 */
struct QV_API SensorFieldOfView2D {
  /** The minimum and the maximum range, metres. A farther obstacle is a miss. */
  float minRange = 0.0f;
  float maxRange = 0.0f;
  /** The full horizontal aperture, radians; not half of it. */
  float angularRange = 0.0f;
  /** The number of rays or samples. Some sensors put a count of their own here: a sonar 15, a
   * depth camera its image's width, a sensor with memory keys their number. */
  std::int32_t rayCount = 0;

  SensorFieldOfView2D() = default;
  SensorFieldOfView2D(float minRange, float maxRange, float angularRange, int rayCount)
      : minRange(minRange), maxRange(maxRange), angularRange(angularRange), rayCount(rayCount) {}

  friend bool operator==(const SensorFieldOfView2D&, const SensorFieldOfView2D&) = default;
};

}  // namespace QV::Math
