#pragma once

#include <array>
#include <cstdint>
#include <optional>

#include "platform/math/metrical_data.h"
#include "platform/math/position.h"

namespace QV::sensor {

/**
 * The obstacles that a sensor sees in its plane: the nearest in each of a few directions, or one
 * range for an arc. Metres and radians, in the robot's ground frame. Trivially copyable.
 */
class PlanarView {
 public:
  /** An empty one of a sensor that stands and looks as the record says; `former` saves time. */
  void begin(const Math::MetricalData& record, bool isArc, const PlanarView& former);
  /** A position in the sensor's plane, x along its axis; false for one out of its range. */
  bool add(float x, float y);

  bool isEmpty() const { return !hasAny; }
  /** The sensor's axis, of length 1. */
  float getAxisX() const { return cosine; }
  float getAxisY() const { return sine; }
  /** The tangent of half its aperture; 0 for a wide one. */
  float getSlope() const { return shape.slope; }

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

  float apexX = 0.0f;
  float apexY = 0.0f;
  float cosine = 1.0f;
  float sine = 0.0f;
  Shape shape;
  float minRange = 0.0f;
  float maxRange = 0.0f;
  bool isArc = false;
  bool hasAny = false;
  /** The obstacles in the sensor's plane; its own place stands for nothing. */
  std::array<float, kDirections> xs{};
  std::array<float, kDirections> ys{};
};

}  // namespace QV::sensor
