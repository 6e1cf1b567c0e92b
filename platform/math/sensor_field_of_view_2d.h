#pragma once

#include <cstdint>

#include "platform/api.h"

namespace QV::Math {

/** What a sensor covers in the plane, about the x axis of its frame. */
struct QV_API SensorFieldOfView2D {
  /** Metres. */
  float minRange = 0.0f;
  float maxRange = 0.0f;
  /** The full horizontal aperture, radians. */
  float angularRange = 0.0f;
  /** Rays or samples; some sensors put a count of their own here and say so. */
  std::int32_t rayCount = 0;

  SensorFieldOfView2D() = default;
  SensorFieldOfView2D(float minRange, float maxRange, float angularRange, int rayCount)
      : minRange(minRange), maxRange(maxRange), angularRange(angularRange), rayCount(rayCount) {}

  friend bool operator==(const SensorFieldOfView2D&, const SensorFieldOfView2D&) = default;
};

}  // namespace QV::Math
