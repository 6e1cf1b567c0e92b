#pragma once

#include "platform/api.h"
#include "platform/navigation/internal/grid_frame.h"
#include "platform/navigation/internal/scan_store.h"
#include "platform/navigation/occupancy_map.h"

namespace QV::detail {

/** The parts that scans ask a map for, once each. */
struct QV_API MapInside {
  /**
   * The store that scans with this limit look at in place of the cells. It is made when it is first
   * asked for, in some milliseconds and half a megabyte for a million cells, and kept true from
   * then on. A map keeps it for two limits; null for others.
   */
  static const ScanStore* findStore(const OccupancyMap& map, float occupiedAbove) {
    return map.inside->scanStores.find(map.width, map.height, map.cells, occupiedAbove);
  }
  /** The place of the cells in the world. */
  static const GridFrame& frameOf(const OccupancyMap& map) { return map.inside->gridFrame; }

  GridFrame gridFrame;
  ScanStores scanStores;
};

}  // namespace QV::detail
