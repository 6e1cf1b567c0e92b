#include "platform/navigation/grid_ray.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "platform/navigation/occupancy_map.h"

namespace QV::detail {
namespace {

constexpr double kOne = static_cast<double>(GridRay::Height{1} << GridRay::kFractionBits);

GridRay::Height toHeight(double rows) {
  return static_cast<GridRay::Height>(std::floor(rows * kOne));
}

bool fits(double rows) {
  return std::abs(rows) <= 2.0 * OccupancyMap::kMaxSide;
}

/** Where a ray lies in the grid: the part of the column axis from `from` to `to`. */
struct Span {
  double from;
  double to;
};

Span clip(const GridRay& ray, int columns, int rows, double slope, double reachAlong) {
  Span span{std::max(0.0, ray.along), std::min<double>(columns, ray.along + reachAlong)};
  if (ray.across < 0.0) span.from = std::max(span.from, ray.along - ray.across / slope);
  // Rows never fall: a ray that starts above the grid stays there.
  if (ray.across >= rows) return {0.0, -1.0};
  span.to = std::min(span.to, ray.along + (rows - ray.across) / slope);
  return span;
}

// A column more on either side than rounding could have cut off; the walk checks its rows.
void chooseColumns(GridRay& ray, const Span& span, int columns) {
  if (!(span.from <= span.to)) return;
  const double start = std::max(0.0, std::floor(ray.along));
  ray.first = static_cast<int>(std::max(start, std::floor(span.from) - 1.0));
  ray.last = std::min(columns - 1, static_cast<int>(span.to) + 1);
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
  return std::max(0.0, (column - along) * perColumn);
}

double GridRay::distanceToRow(int column, int row) const {
  return std::clamp((row - across) * perRow, distanceToColumn(column),
                    distanceToColumn(column + 1));
}

GridRay aimRay(int width, int height, const GridPoint& start, double directionX, double directionY,
               double reach) {
  GridRay ray;
  ray.steep = std::abs(directionY) > std::abs(directionX);
  ray.along = start.x;
  ray.across = start.y;
  if (ray.steep) {
    std::swap(ray.along, ray.across);
    std::swap(directionX, directionY);
    std::swap(width, height);
  }
  ray.alongReversed = directionX < 0.0;
  ray.acrossReversed = directionY < 0.0;
  if (ray.alongReversed) ray.along = width - ray.along;
  if (ray.acrossReversed) ray.across = height - ray.across;
  ray.perColumn = 1.0 / std::abs(directionX);
  ray.perRow = 1.0 / std::abs(directionY);
  const double slope = std::abs(directionY) / std::abs(directionX);
  chooseColumns(ray, clip(ray, width, height, slope, reach * std::abs(directionX)), width);
  if (ray.first <= ray.last) chooseHeights(ray, slope);
  return ray;
}

}  // namespace QV::detail
