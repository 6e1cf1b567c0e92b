#include "sensor/core/internal/planar_view.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace QV::sensor {
namespace {

// Radians; beyond that the slope is too coarse for a direction.
constexpr float kWide = 1.3f;
// The shares of the aperture in which a sensor certainly looks, and in which it may look.
constexpr float kInner = 0.85f;
constexpr float kOuter = 1.15f;
constexpr float kUnit = 1e-3f;
constexpr float kNothingSeen = std::numeric_limits<float>::infinity();

}  // namespace

PlanarView::Shape PlanarView::xShapeOf(float halfAperture) {
  const bool isWide = !(kOuter * halfAperture < kWide);
  const auto slopeOf = [&](float scale) { return isWide ? 0.0f : std::tan(scale * halfAperture); };
  return {halfAperture,  std::sin(halfAperture), std::cos(halfAperture),
          slopeOf(1.0f), slopeOf(kInner),        slopeOf(kOuter)};
}

void PlanarView::begin(const Math::MetricalData& record, bool arc, const Shape& former) {
  isArc = arc;
  apexX = record.sensorTransform(0, 3);
  apexY = record.sensorTransform(1, 3);
  cosine = record.sensorTransform(0, 0);
  sine = record.sensorTransform(1, 0);
  const float square = cosine * cosine + sine * sine;
  if (std::abs(square - 1.0f) > kUnit) {
    const float length = std::sqrt(square);
    cosine = length > 0.0f ? cosine / length : 1.0f;
    sine = length > 0.0f ? sine / length : 0.0f;
  }
  const float halfAperture = 0.5f * record.fieldOfView.angularRange;
  shape = halfAperture == former.halfAperture ? former : xShapeOf(halfAperture);
  minRange = record.fieldOfView.minRange;
  maxRange = record.fieldOfView.maxRange;
}

bool PlanarView::xOverlaps(const PlanarView& other) const {
  if (shape.halfAperture + other.shape.halfAperture >= kWide * 2.0f) return true;
  const float apart = cosine * other.cosine + sine * other.sine;
  return apart > shape.cosine * other.shape.cosine - shape.sine * other.shape.sine;
}

bool PlanarView::xCoversEcho(const PlanarView& arc) const {
  const float range = std::sqrt(arc.xSquareAt(0));
  const float x = range * arc.shape.cosine;
  for (const float y : {range * arc.shape.sine, -range * arc.shape.sine}) {
    const float dx = arc.apexX + arc.cosine * x - arc.sine * y - apexX;
    const float dy = arc.apexY + arc.sine * x + arc.cosine * y - apexY;
    const float angle = std::atan2(cosine * dy - sine * dx, cosine * dx + sine * dy);
    if (std::abs(angle) > shape.halfAperture || std::hypot(dx, dy) > maxRange) return false;
  }
  return true;
}

PlanarView::Nearest PlanarView::xFindNearest(const PlanarView& other,
                                             const PlanarView& from) const {
  if (isArc) return {xSquareAt(0), xSquareAt(0)};
  Nearest nearest{kNothingSeen, kNothingSeen};
  for (std::size_t i = 0; i < kDirections; ++i) {
    if (xs[i] == 0.0f && ys[i] == 0.0f) continue;
    const float x = apexX + cosine * xs[i] - sine * ys[i];
    const float y = apexY + sine * xs[i] + cosine * ys[i];
    const float dx = x - other.apexX;
    const float dy = y - other.apexY;
    if (dx * dx + dy * dy > other.maxRange * other.maxRange) continue;
    const float ahead = other.cosine * dx + other.sine * dy;
    const float aside = std::abs(other.cosine * dy - other.sine * dx);
    const bool isWide = other.shape.slope == 0.0f;
    const float angle = isWide ? std::atan2(aside, ahead) : 0.0f;
    const auto isWithin = [&](float slope, float scale) {
      return isWide ? angle < scale * other.shape.halfAperture : aside < slope * ahead;
    };
    if (!isWithin(other.shape.outer, kOuter)) continue;
    const float square = (x - from.apexX) * (x - from.apexX) + (y - from.apexY) * (y - from.apexY);
    nearest.outer = std::min(nearest.outer, square);
    if (isWithin(other.shape.inner, kInner)) nearest.inner = std::min(nearest.inner, square);
  }
  return nearest;
}

std::optional<PlanarView::Comparison> PlanarView::compare(const PlanarView& a,
                                                          const PlanarView& b) {
  // An echo's direction is unknown, so two arcs can't be compared.
  if (a.isEmpty() || b.isEmpty() || (a.isArc && b.isArc) || !a.xOverlaps(b)) return std::nullopt;
  if (!b.isArc) return xCompareFrom(a, b);
  const auto seen = xCompareFrom(b, a);
  if (!seen) return std::nullopt;
  return Comparison{seen->others, seen->own};
}

std::optional<PlanarView::Comparison> PlanarView::xCompareFrom(const PlanarView& from,
                                                               const PlanarView& other) {
  const Nearest own = from.xFindNearest(other, from);
  const Nearest others = other.xFindNearest(from, from);
  if (own.inner == kNothingSeen || others.inner == kNothingSeen) return std::nullopt;
  const auto tell = [](float first, float second) {
    return Comparison{std::sqrt(first), std::sqrt(second)};
  };
  if (others.inner < own.outer) return tell(own.outer, others.inner);
  const bool isCertain = !from.isArc || other.xCoversEcho(from);
  if (own.inner < others.outer && isCertain) return tell(own.inner, others.outer);
  return tell(own.inner, own.inner);
}

}  // namespace QV::sensor
