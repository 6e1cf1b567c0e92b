#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <optional>

#include "platform/api.h"
#include "platform/math/metrical_data.h"
#include "platform/math/position.h"

namespace QV::sensor {

/**
 * The obstacles that a sensor sees in its plane: the nearest in each of a few directions, or one
 * range for an arc. Metres and radians, in the robot's ground frame. Trivially copyable.
 */
class QV_API PlanarView {
 public:
  /** The trigonometry of an aperture, which hardly ever changes. */
  struct Shape {
    float halfAperture = 0.0f;
    float sine = 0.0f;
    float cosine = 1.0f;
    /** Tangents of half the aperture as it is, a little smaller, and larger; 0 for a wide one. */
    float slope = 0.0f;
    float inner = 0.0f;
    float outer = 0.0f;
  };

  /** An empty one of a sensor that stands and looks as the record says; `former` saves time. */
  void begin(const Math::MetricalData& record, bool isArc, const Shape& former);
  /** A position in the sensor's plane, x along its axis; false for one out of its range. */
  bool add(float x, float y);

  bool isEmpty() const { return !hasAny; }
  /** The sensor's axis, of length 1. */
  float getAxisX() const { return cosine; }
  float getAxisY() const { return sine; }
  /** The tangent of half its aperture; 0 for a wide one. */
  float getSlope() const { return shape.slope; }
  const Shape& getShape() const { return shape; }

  /** The ranges of the nearest obstacle where two sensors look, as each of them says; the same
   * where they may agree. */
  struct Comparison {
    float own;
    float others;
  };
  /**
   * Nothing where they don't overlap, or one of them sees nothing there. One that says less counts
   * where the other one looks for certain, one that says more where it may look at all.
   */
  static std::optional<Comparison> compare(const PlanarView& a, const PlanarView& b);

 private:
  static constexpr std::size_t kDirections = 12;

  static Shape xShapeOf(float halfAperture);
  /** Squares of ranges: of what is seen for certain, and of what may be. */
  struct Nearest {
    float inner;
    float outer;
  };

  std::size_t xDirectionOf(float x, float y) const;
  float xSquareAt(std::size_t direction) const;
  /** True if it can look where the other one does. */
  bool xOverlaps(const PlanarView& other) const;
  /** True if the whole of an arc's echo lies within its view. */
  bool xCoversEcho(const PlanarView& arc) const;
  /** Finds the nearest, seen from `from`, of what lies within the view of the other one, too. */
  Nearest xFindNearest(const PlanarView& other, const PlanarView& from) const;
  static std::optional<Comparison> xCompareFrom(const PlanarView& from, const PlanarView& other);

  /** First, so that it can be loaded alone. */
  Shape shape;
  float apexX = 0.0f;
  float apexY = 0.0f;
  float cosine = 1.0f;
  float sine = 0.0f;
  float minRange = 0.0f;
  float maxRange = 0.0f;
  bool isArc = false;
  bool hasAny = false;
  /** The obstacles in the sensor's plane; its own place stands for nothing. */
  std::array<float, kDirections> xs{};
  std::array<float, kDirections> ys{};
};

// This is inline, because it runs for a hundred points of a reading.
inline float PlanarView::xSquareAt(std::size_t direction) const {
  return xs[direction] * xs[direction] + ys[direction] * ys[direction];
}

inline std::size_t PlanarView::xDirectionOf(float x, float y) const {
  const float share =
      shape.slope > 0.0f ? y / (x * shape.slope) : std::atan2(y, x) / shape.halfAperture;
  const float scaled = (share + 1.0f) * 0.5f * static_cast<float>(kDirections);
  // A single beam has no aperture, and so no share of it.
  if (!(scaled > 0.0f)) return 0;
  return static_cast<std::size_t>(std::min(scaled, static_cast<float>(kDirections) - 1.0f));
}

inline bool PlanarView::add(float x, float y) {
  const float square = x * x + y * y;
  if (!(square > minRange * minRange && square < maxRange * maxRange)) return false;
  if (shape.slope > 0.0f && x <= 0.0f) return false;
  hasAny = true;
  const std::size_t direction = isArc ? 0 : xDirectionOf(x, y);
  const float nearest = xSquareAt(direction);
  if (nearest > 0.0f && nearest <= square) return true;
  xs[direction] = x;
  ys[direction] = y;
  return true;
}

}  // namespace QV::sensor
