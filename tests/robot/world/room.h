#pragma once

#include <boost/make_shared.hpp>

#include "platform/navigation/occupancy_map.h"

namespace QV::test {

/** A free room from (0, 0) to (10, 6), its walls one cell of 5 cm thick and in free space. */
inline boost::shared_ptr<OccupancyMap> makeRoom() {
  constexpr int kWidth = 202;
  constexpr int kHeight = 122;
  auto map = boost::make_shared<OccupancyMap>(kWidth, kHeight, 0.05f,
                                              Math::Pose2D(-0.05f, -0.05f, 0.0f), 0.0f);
  for (int row = 0; row < kHeight; ++row) {
    for (int column = 0; column < kWidth; ++column) {
      const bool isEdge = row == 0 || column == 0 || row == kHeight - 1 || column == kWidth - 1;
      if (isEdge) map->setOccupancy(column, row, 1.0f);
    }
  }
  return map;
}

}  // namespace QV::test
