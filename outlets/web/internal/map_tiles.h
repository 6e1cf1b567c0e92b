#pragma once

#include <optional>
#include <string>
#include <vector>

#include <boost/shared_ptr.hpp>
#include <opencv2/core.hpp>

#include "platform/api.h"
#include "platform/navigation/occupancy_map.h"

namespace QV::outlets {

/**
 * A map as square pictures: level 0 has a pixel a cell, each further level half as many across. A
 * pixel that stands for several cells shows the darkest, so that no wall gets lost. Safe from any
 * thread.
 */
class QV_API MapTiles {
 public:
  /** Pixels across a tile; those at the right and at the top may be smaller. */
  static constexpr int kSide = 512;

  /** Null for no map, which has no tiles. */
  explicit MapTiles(boost::shared_ptr<const OccupancyMap> map);

  /** The last level is one tile. */
  int getLevelCount() const;

  /**
   * The PNG of "/map/LEVEL/COLUMN/ROW.png", counted from the map's origin, with its last row on
   * top: grey, 0 solid, 205 unknown, 254 free. std::nullopt for any other path.
   */
  std::optional<std::string> find(const std::string& path) const;

 private:
  std::optional<std::string> xFind(int level, int column, int row) const;

  const boost::shared_ptr<const OccupancyMap> map;
  /** Row 0 first; level 0 is the map itself. */
  std::vector<cv::Mat_<uchar>> halves;
};

}  // namespace QV::outlets
