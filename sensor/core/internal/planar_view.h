#pragma once

#include <array>
#include <cstdint>
#include <optional>

#include "platform/math/metrical_data.h"
#include "platform/math/position.h"

namespace QV::sensor {

/**
 * What a sensor sees in its plane: the nearest obstacle in each of a few directions, or one range
 * for an arc. Metres and radians, in the robot's ground frame. Trivially copyable.
 */
class PlanarView {
 public:
  /** An empty one of a sensor that stands and looks as the record says. */
  void begin(const Math::MetricalData& record, bool isArc);
  /** A position in the sensor's plane, x along its axis; false for one out of its range. */
  bool add(float x, float y);

  bool isEmpty() const { return !hasAny; }
  /** The share of a motion, of length 1, that goes along its axis: -1 to 1. */
  float along(float directionX, float directionY) const {
    return cosine * directionX + sine * directionY;
  }

  /** What two sensors say of the place that both look at; ranges from the first one. */
  struct Comparison {
    float own;
    float others;
  };
  /** Nothing where they don't overlap, or one of them sees nothing there. */
  static std::optional<Comparison> compare(const PlanarView& a, const PlanarView& b);

 private:
  static constexpr std::size_t kDirections = 16;

  std::size_t xDirectionOf(float x, float y) const;
  bool xCovers(float groundX, float groundY) const;
  /** Of what lies within the view of the other one, too; from `from`. */
  std::optional<float> xNearest(const PlanarView& other, const PlanarView& from) const;

  float apexX = 0.0f;
  float apexY = 0.0f;
  float cosine = 1.0f;
  float sine = 0.0f;
  float halfAperture = 0.0f;
  float slope = 0.0f;
  float minRange = 0.0f;
  float maxRange = 0.0f;
  bool isArc = false;
  bool hasAny = false;
  /** Squares of ranges, and what they belong to in the sensor's plane; 0 for nothing. */
  std::array<float, kDirections> squares{};
  std::array<float, kDirections> xs{};
  std::array<float, kDirections> ys{};
};

}  // namespace QV::sensor
