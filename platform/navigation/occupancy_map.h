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
 * Where the zero of a map lies in the coordinates of its file, metres. Positions are floats, which
 * are coarse far from zero, so a map in UTM coordinates is held with a zero nearby.
 */
struct MapShift {
  double x = 0.0;
  double y = 0.0;
};

/**
 * A grid of occupancies from 0 (free) to 1 (occupied).
 * - Frames: the origin is the pose of the outer corner of cell (0, 0) in the map frame M. Columns
 *   run along its x axis, rows along its y axis.
 * - Units: metres, radians; cells are counted from 0.
 * - Special values: 0.5 is unknown. Cells above 0.4, so also unknown ones, are solid for rays and
 *   robots.
 * - Lifetime: copyable. Whoever holds a pointer or reference must not outlive it.
 * - Threads: reading is thread-safe as long as nobody writes.
 * - Errors: impossible sizes and occupancies throw std::invalid_argument, cells outside
 *   std::out_of_range.
 *
 * Ten metres by ten, with a wall:
 *
 *     QV::OccupancyMap hall(100, 100, 0.1f, QV::Math::Pose2D(), 0.0f);
 *     for (int row = 0; row < hall.getHeight(); ++row) hall.setOccupancy(70, row, 1.0f);
 */
class QV_API OccupancyMap {
 public:
  static constexpr float kUnknown = 0.5f;
  /** The limit above which a cell is solid: occupied and unknown ones. */
  static constexpr float kSolidAbove = 0.4f;
  /** The longest side, in cells. */
  static constexpr int kMaxSide = 1 << 20;

  /** Makes `width` by `height` cells of `resolution` metres, all of one occupancy. Throws
   * std::invalid_argument for a side outside 1..kMaxSide, a resolution that is not positive, an
   * origin that is not finite, or an occupancy outside 0..1. */
  OccupancyMap(int width, int height, float resolution, const Math::Pose2D& origin,
               float occupancy = kUnknown);

  /** Makes a map of these occupancies, row by row. Throws also if cells.size() is not width *
   * height. */
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
  /** A position in M plus this is the position in the coordinates of the map's file. */
  const MapShift& getShift() const { return shift; }
  void setShift(const MapShift& newShift) { shift = newShift; }
  /** The occupancies row by row, from row 0. */
  const std::vector<float>& getCells() const { return cells; }

  bool isInside(int column, int row) const {
    return column >= 0 && column < width && row >= 0 && row < height;
  }

  /** Returns the occupancy of a cell. Throws std::out_of_range outside the map. */
  float getOccupancy(int column, int row) const;
  /** Sets the occupancy of a cell. Throws std::out_of_range outside the map, std::invalid_argument
   * for an occupancy outside 0..1. */
  void setOccupancy(int column, int row, float occupancy);

  /** Returns the occupancy at a position in M; std::nullopt outside the map. */
  std::optional<float> findOccupancy(const Math::Position2D& position) const;
  /** Returns the centre of a cell in M; the cell may lie outside the map. */
  Math::Position2D getCellCentre(int column, int row) const;

 private:
  friend struct detail::MapInside;

  std::size_t xIndex(int column, int row) const;

  int width;
  int height;
  float resolution;
  Math::Pose2D origin;
  MapShift shift;
  std::vector<float> cells;
  std::unique_ptr<detail::MapInside> inside;
};

}  // namespace QV
