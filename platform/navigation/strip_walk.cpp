#include "platform/navigation/strip_walk.h"

#include <algorithm>
#include <cstdint>
#include <limits>

namespace QV::detail {
namespace {

typedef GridRay::Height Height;

constexpr int kQuad = 4;
constexpr int kQuadsPerStrip = StripImage::kStripColumns / kQuad;

Height toHeight(int row) {
  return Height{row} << GridRay::kFractionBits;
}

/** A store's bits by a ray's own columns and rows; its columns by fours as the image has them. */
class RayView {
 public:
  RayView(const ScanStore& store, const GridRay& ray)
      : image(ray.steep ? store.getTurned() : store.getUpright()),
        columns(ray.columns),
        rows(ray.rows),
        alongReversed(ray.alongReversed),
        acrossReversed(ray.acrossReversed) {}

  int quadOf(int column) const { return toImageColumn(column) / kQuad; }
  int quadAfter(int quad) const { return alongReversed ? quad - 1 : quad + 1; }
  /** The column of a quad that the ray meets first. */
  int columnOf(int quad) const {
    return alongReversed ? columns - kQuad * (quad + 1) : kQuad * quad;
  }

  /** Whether a quad has any cell in the rows from `lowest` to `highest`; at most 16 of them. */
  bool hasAny(int quad, int lowest, int highest) const {
    const int bottom = acrossReversed ? rows - 1 - highest : lowest;
    const auto& words =
        image.getBlock(quad / kQuadsPerStrip, bottom >> StripImage::kGroupBits).words;
    const auto first = static_cast<std::size_t>(quad % kQuadsPerStrip * kQuad);
    const std::uint32_t any = words[first] | words[first + 1] | words[first + 2] | words[first + 3];
    const std::uint32_t wanted = (2u << (highest - lowest)) - 1u;
    return (any >> (bottom & (StripImage::kGroupRows - 1)) & wanted) != 0;
  }

  bool has(int column, int row) const {
    if (row < 0 || row >= rows) return false;
    return image.get(toImageColumn(column), acrossReversed ? rows - 1 - row : row);
  }

 private:
  int toImageColumn(int column) const { return alongReversed ? columns - 1 - column : column; }

  const StripImage& image;
  int columns;
  int rows;
  bool alongReversed;
  bool acrossReversed;
};

// Only a start so far away that doubles cannot say where the ray meets the grid.
bool strays(const GridRay& ray) {
  return ray.entry < toHeight(-3) || ray.entryOf(ray.last) >= toHeight(ray.rows + 2);
}

std::optional<double> walkColumns(const RayView& view, const GridRay& ray, int from, int to) {
  for (int column = from; column <= to; ++column) {
    const int row = GridRay::rowFrom(ray.entryOf(column));
    if (view.has(column, row)) return ray.distanceToColumn(column);
    const bool rises = GridRay::rowBelow(ray.entryOf(column + 1)) > row;
    if (rises && view.has(column, row + 1)) return ray.distanceToRow(column, row + 1);
  }
  return std::nullopt;
}

}  // namespace

std::optional<double> walkStrips(const ScanStore& store, const GridRay& ray) {
  constexpr double kNever = std::numeric_limits<double>::infinity();
  if (ray.first > ray.last) return kNever;
  if (strays(ray)) return std::nullopt;
  const RayView view(store, ray);
  const int end = view.quadOf(ray.last);
  int quad = view.quadOf(ray.first);
  Height height = ray.exit + (view.columnOf(quad) - ray.first - 1) * ray.rise;
  int lowest = GridRay::rowFrom(std::min(height, ray.entry));
  while (true) {
    height += kQuad * ray.rise;
    const int highest = GridRay::rowFrom(height);
    if (view.hasAny(quad, lowest, highest)) {
      const int column = view.columnOf(quad);
      const auto way = walkColumns(view, ray, std::max(column, ray.first),
                                   std::min(column + kQuad - 1, ray.last));
      if (way) return way;
    }
    if (quad == end) return kNever;
    quad = view.quadAfter(quad);
    lowest = highest;
  }
}

}  // namespace QV::detail
