#include "platform/navigation/internal/plain_walk.h"

#include <algorithm>
#include <cstddef>
#include <limits>

namespace QV::detail {
namespace {

/** The map's cells by a ray's own columns and rows. */
class Cells {
 public:
  Cells(const OccupancyMap& map, const GridRay& ray) : cells(map.getCells().data()) {
    const std::ptrdiff_t width = map.getWidth();
    along = ray.steep ? width : 1;
    across = ray.steep ? 1 : width;
    rows = ray.rows;
    if (ray.alongReversed) {
      cells += along * (ray.columns - 1);
      along = -along;
    }
    if (ray.acrossReversed) {
      cells += across * (rows - 1);
      across = -across;
    }
  }

  bool isAbove(int column, int row, float limit) const {
    if (row < 0 || row >= rows) return false;
    return cells[column * along + row * across] > limit;
  }

 private:
  const float* cells;
  std::ptrdiff_t along;
  std::ptrdiff_t across;
  int rows;
};

}  // namespace

double walkPlainly(const OccupancyMap& map, const GridRay& ray, float occupiedAbove) {
  const Cells cells(map, ray);
  GridRay::Height entry = ray.entry;
  GridRay::Height exit = ray.exit;
  for (int column = ray.first; column <= ray.last; ++column) {
    const int row = GridRay::rowFrom(entry);
    if (cells.isAbove(column, row, occupiedAbove)) return ray.distanceToColumn(column);
    if (GridRay::rowBelow(exit) > row && cells.isAbove(column, row + 1, occupiedAbove)) {
      return ray.distanceToRow(column, row + 1);
    }
    entry = exit;
    exit += ray.rise;
  }
  return std::numeric_limits<double>::infinity();
}

}  // namespace QV::detail
