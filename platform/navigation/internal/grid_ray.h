#pragma once

#include <cstdint>

#include "platform/api.h"
#include "platform/navigation/internal/grid_frame.h"

namespace QV::detail {

/**
 * A ray over a grid as a line in fixed point, in a frame of its own: turned and mirrored so that it
 * advances column by column along its longer axis while its rows never fall. The line is rounded
 * once, when it is made; which cells it crosses is exact from there on. Lengths are in cells.
 */
struct QV_API GridRay {
  static constexpr int kFractionBits = 40;
  using Height = std::int64_t;

  /** The ray's columns are the grid's rows. */
  bool steep = false;
  bool alongReversed = false;
  bool acrossReversed = false;
  /** The grid, the start and the direction (a unit vector) in the ray's frame. */
  int columns = 0;
  int rows = 0;
  double along = 0.0;
  double across = 0.0;
  double alongPart = 1.0;
  double acrossPart = 0.0;
  /** The columns to look at, none when last is below first. */
  int first = 0;
  int last = -1;
  /** Heights where the ray enters (or starts in) the first column and where it leaves it. */
  Height entry = 0;
  Height exit = 0;
  /** The rise from one column to the next; at most one row. */
  Height rise = 0;

  /** The row of a cell that the ray enters at a height, and of the last cell before a height. */
  static int rowFrom(Height height) { return static_cast<int>(height >> kFractionBits); }
  static int rowBelow(Height height) { return rowFrom(height - 1); }

  /** Heights where the ray enters a column, from the first on to one after the last. */
  Height entryOf(int column) const {
    return column == first ? entry : exit + (column - first - 1) * rise;
  }

  /** The way to where the ray enters a column, or a row within a column. */
  double distanceToColumn(int column) const;
  double distanceToRow(int column, int row) const;
};

/**
 * The ray from `start` towards (`directionX`, `directionY`), a unit vector, over a grid of `width`
 * by `height` cells, cut to what lies in the grid within `reach`; a column more at most.
 */
QV_API GridRay aimRay(int width, int height, const GridPoint& start, double directionX,
                      double directionY, double reach);

}  // namespace QV::detail
