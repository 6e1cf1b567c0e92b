#pragma once

#include "platform/navigation/occupancy_map.h"

namespace QV::test {

/** A free map whose outermost cells are walls. */
inline OccupancyMap makeWalledMap(int columns, int rows, float resolution,
                                  const Math::Pose2D& origin = {}) {
  OccupancyMap map(columns, rows, resolution, origin, 0.0f);
  for (int column = 0; column < columns; ++column) {
    for (const int row : {0, rows - 1}) map.setOccupancy(column, row, 1.0f);
  }
  for (int row = 0; row < rows; ++row) {
    for (const int column : {0, columns - 1}) map.setOccupancy(column, row, 1.0f);
  }
  return map;
}

}  // namespace QV::test
