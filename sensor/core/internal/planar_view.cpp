#include "sensor/core/internal/planar_view.h"

#include <algorithm>
#include <cmath>

namespace QV::sensor {
namespace {

// Beyond that the slope of a direction says too little of it.
constexpr float kWide = 1.3f;
// A view's edges are left out: two sensors stand at different places.
constexpr float kInner = 0.95f;

}  // namespace

void PlanarView::begin(const Math::MetricalData& record, bool arc) {
  *this = PlanarView();
  isArc = arc;
  apexX = record.sensorTransform(0, 3);
  apexY = record.sensorTransform(1, 3);
  const float x = record.sensorTransform(0, 0);
  const float y = record.sensorTransform(1, 0);
  const float length = std::hypot(x, y);
  if (length > 0.0f) {
    cosine = x / length;
    sine = y / length;
  }
  halfAperture = 0.5f * record.fieldOfView.angularRange;
  slope = halfAperture < kWide ? std::tan(halfAperture) : 0.0f;
  minRange = record.fieldOfView.minRange;
  maxRange = record.fieldOfView.maxRange;
}

std::size_t PlanarView::xDirectionOf(float x, float y) const {
  const float share = slope > 0.0f ? y / (x * slope) : std::atan2(y, x) / halfAperture;
  const float scaled = (share + 1.0f) * 0.5f * static_cast<float>(kDirections);
  return static_cast<std::size_t>(
      std::clamp(scaled, 0.0f, static_cast<float>(kDirections) - 1.0f));
}

bool PlanarView::add(float x, float y) {
  const float square = x * x + y * y;
  if (!(square > minRange * minRange && square < maxRange * maxRange)) return false;
  if (slope > 0.0f && x <= 0.0f) return false;
  hasAny = true;
  const std::size_t direction = isArc ? 0 : xDirectionOf(x, y);
  if (squares[direction] > 0.0f && squares[direction] <= square) return true;
  squares[direction] = square;
  xs[direction] = x;
  ys[direction] = y;
  return true;
}

bool PlanarView::xCovers(float groundX, float groundY) const {
  const float dx = groundX - apexX;
  const float dy = groundY - apexY;
  const float angle = std::atan2(cosine * dy - sine * dx, cosine * dx + sine * dy);
  return std::abs(angle) < kInner * halfAperture && std::hypot(dx, dy) < maxRange;
}

std::optional<float> PlanarView::xNearest(const PlanarView& other, const PlanarView& from) const {
  if (isArc) return std::sqrt(squares[0]);
  std::optional<float> nearest;
  for (std::size_t i = 0; i < kDirections; ++i) {
    if (squares[i] == 0.0f) continue;
    const float x = apexX + cosine * xs[i] - sine * ys[i];
    const float y = apexY + sine * xs[i] + cosine * ys[i];
    if (!other.xCovers(x, y)) continue;
    const float range = std::hypot(x - from.apexX, y - from.apexY);
    nearest = std::min(range, nearest.value_or(range));
  }
  return nearest;
}

std::optional<PlanarView::Comparison> PlanarView::compare(const PlanarView& a,
                                                          const PlanarView& b) {
  // An echo's direction is not known: of two arcs none can say what the other one hears.
  if (a.isEmpty() || b.isEmpty() || (a.isArc && b.isArc)) return std::nullopt;
  const PlanarView& from = b.isArc ? b : a;
  const auto own = a.xNearest(b, from);
  const auto others = b.xNearest(a, from);
  if (!own || !others) return std::nullopt;
  return Comparison{*own, *others};
}

}  // namespace QV::sensor
