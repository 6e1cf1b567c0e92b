#include "platform/navigation/internal/grid_ray.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "platform/navigation/occupancy_map.h"

namespace QV::detail {
namespace {

constexpr double kOne = static_cast<double>(GridRay::Height{1} << GridRay::kFractionBits);

GridRay::Height toHeight(double rows) {
  const double scaled = rows * kOne;
  const auto truncated = static_cast<GridRay::Height>(scaled);
  return truncated - (static_cast<double>(truncated) > scaled);
}

bool fits(double rows) {
  return std::abs(rows) <= 2.0 * OccupancyMap::kMaxSide;
}

/** A ray's place in the grid: the part of the column axis from `from` to `to`. */
struct Span {
  double from;
  double to;
};

Span clip(const GridRay& ray, double slope, double reach) {
  // Rows never fall: a ray that starts above the grid stays there.
  if (ray.across >= ray.rows) return {0.0, -1.0};
  Span span{std::max(0.0, ray.along),
            std::min<double>(ray.columns, ray.along + reach * ray.alongPart)};
  if (ray.across < 0.0) span.from = std::max(span.from, ray.along - ray.across / slope);
  if (ray.across + (span.to - ray.along) * slope > ray.rows) {
    span.to = ray.along + (ray.rows - ray.across) / slope;
  }
  return span;
}

// A column more on either side than rounding could have cut off; the walk checks its rows.
void chooseColumns(GridRay& ray, const Span& span) {
  if (!(span.from <= span.to)) return;
  const int start = static_cast<int>(std::clamp<double>(ray.along, 0.0, ray.columns));
  ray.first = std::max(start, static_cast<int>(span.from) - 1);
  ray.last = std::min(ray.columns - 1, static_cast<int>(span.to) + 1);
}

void chooseHeights(GridRay& ray, double slope) {
  const double entry = ray.across + std::max(0.0, ray.first - ray.along) * slope;
  const double exit = ray.across + (ray.first + 1 - ray.along) * slope;
  if (!fits(entry) || !fits(exit)) {
    ray.last = ray.first - 1;
    return;
  }
  ray.entry = toHeight(entry);
  ray.exit = toHeight(exit);
  ray.rise = toHeight(slope);
}

}  // namespace

double GridRay::distanceToColumn(int column) const {
  return std::max(0.0, (column - along) * (1.0 / alongPart));
}

double GridRay::distanceToRow(int column, int row) const {
  return std::clamp((row - across) / acrossPart, distanceToColumn(column),
                    distanceToColumn(column + 1));
}

GridRay aimRay(int width, int height, const GridPoint& start, double directionX, double directionY,
               double reach) {
  GridRay ray{.steep = std::abs(directionY) > std::abs(directionX),
              .alongReversed = directionX < 0.0,
              .acrossReversed = directionY < 0.0,
              .columns = width,
              .rows = height,
              .along = start.x,
              .across = start.y,
              .alongPart = std::abs(directionX),
              .acrossPart = std::abs(directionY)};
  if (ray.steep) {
    std::swap(ray.alongReversed, ray.acrossReversed);
    std::swap(ray.columns, ray.rows);
    std::swap(ray.along, ray.across);
    std::swap(ray.alongPart, ray.acrossPart);
  }
  if (ray.alongReversed) ray.along = ray.columns - ray.along;
  if (ray.acrossReversed) ray.across = ray.rows - ray.across;
  const double slope = ray.acrossPart / ray.alongPart;
  chooseColumns(ray, clip(ray, slope, reach));
  if (ray.first <= ray.last) chooseHeights(ray, slope);
  return ray;
}

}  // namespace QV::detail
