#pragma once

#include <cstdint>

#include "platform/navigation/internal/fan_cast.h"
#include "platform/navigation/internal/grid_ray.h"
#include "platform/navigation/internal/strip_image.h"

namespace QV::detail {

/**
 * A sector of a fan's directions, an eighth of the turn: the frame that the GridRay of its rays
 * share, and how that lies over an image.
 */
struct FanSector {
  /** Flags of a sector; their sum is its number. */
  static constexpr int kSteep = 1;
  static constexpr int kAlongReversed = 2;
  static constexpr int kAcrossReversed = 4;

  FanSector(const FanCast& fan, int sector)
      : steep((sector & kSteep) != 0),
        alongReversed((sector & kAlongReversed) != 0),
        acrossReversed((sector & kAcrossReversed) != 0),
        image(steep ? fan.store->getTurned() : fan.store->getUpright()),
        columns(steep ? fan.height : fan.width),
        rows(steep ? fan.width : fan.height),
        along(steep ? fan.start.y : fan.start.x),
        across(steep ? fan.start.x : fan.start.y) {
    if (alongReversed) {
      along = columns - along;
      columnStep = -1;
      columnBase = columns - 1;
    }
    if (acrossReversed) {
      across = rows - across;
      rowStep = -1;
      rowBase = rows - 1;
    }
    first = static_cast<int>(along);
    firstRow = static_cast<int>(across);
  }

  /** The frame's columns and rows as the image counts them, and back. */
  int turnColumn(int column) const { return columnBase + columnStep * column; }
  int turnRow(int row) const { return rowBase + rowStep * row; }

  bool has(int column, int row) const {
    return row < rows && image.get(turnColumn(column), turnRow(row));
  }

  /** True if the lines of rays fall from column to column of the image. */
  bool falls() const { return alongReversed != acrossReversed; }

  bool steep;
  bool alongReversed;
  bool acrossReversed;
  const StripImage& image;
  int columns;
  int rows;
  /** The start, in the frame, and its cell. */
  double along;
  double across;
  int first;
  int firstRow;
  int columnStep = 1;
  int columnBase = 0;
  int rowStep = 1;
  int rowBase = 0;
};

}  // namespace QV::detail
