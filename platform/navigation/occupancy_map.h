#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <vector>

#include "platform/api.h"
#include "platform/math/pose2d.h"
#include "platform/math/position.h"

namespace QV {

namespace detail {
struct MapInside;
}

/**
 * A grid of occupancies from 0 (free) to 1 (occupied); 0.5 is unknown. Cell (0, 0) touches the
 * origin, columns run along the origin's x axis and rows along its y axis. Copyable. Reading is
 * safe from several threads as long as none writes. What casts rays keeps half a megabyte for a
 * million cells beside it.
 */
class QV_API OccupancyMap {
 public:
  static constexpr float kUnknown = 0.5f;
  /** Whatever casts rays or drives takes cells above this as solid: occupied and unknown ones. */
  static constexpr float kSolidAbove = 0.4f;
  /** The longest side, in cells. */
  static constexpr int kMaxSide = 1 << 20;

  /**
   * `width` by `height` cells of `resolution` metres, all of one occupancy; `origin` is the outer
   * corner of cell (0, 0) in the world. A side outside 1..kMaxSide, a resolution that is not
   * positive, an origin that is not finite or an occupancy outside 0..1 throws
   * std::invalid_argument.
   */
  OccupancyMap(int width, int height, float resolution, const Math::Pose2D& origin,
               float occupancy = kUnknown);

  /** As above, with the cells' occupancies row by row; any but `width` * `height` throws too. */
  OccupancyMap(int width, int height, float resolution, const Math::Pose2D& origin,
               std::vector<float> cells);
  ~OccupancyMap();
  OccupancyMap(const OccupancyMap& other);
  OccupancyMap(OccupancyMap&& other) noexcept;
  OccupancyMap& operator=(const OccupancyMap& other);
  OccupancyMap& operator=(OccupancyMap&& other) noexcept;

  int getWidth() const { return width; }
  int getHeight() const { return height; }
  float getResolution() const { return resolution; }
  const Math::Pose2D& getOrigin() const { return origin; }
  /** Row by row, from row 0. */
  const std::vector<float>& getCells() const { return cells; }

  bool isInside(int column, int row) const {
    return column >= 0 && column < width && row >= 0 && row < height;
  }

  /** Outside the map: std::out_of_range. */
  float getOccupancy(int column, int row) const;
  /** Outside the map: std::out_of_range; an occupancy outside 0..1: std::invalid_argument. */
  void setOccupancy(int column, int row, float occupancy);

  /** The occupancy at a position in the world; nothing outside the map. */
  std::optional<float> findOccupancy(const Math::Position2D& position) const;
  /** The centre of a cell, inside the map or not, in the world. */
  Math::Position2D getCellCentre(int column, int row) const;

 private:
  friend struct detail::MapInside;

  std::size_t xIndex(int column, int row) const;

  int width;
  int height;
  float resolution;
  Math::Pose2D origin;
  std::vector<float> cells;
  std::unique_ptr<detail::MapInside> inside;
};

}  // namespace QV
