#pragma once

#include <opencv2/core.hpp>

#include "platform/api.h"
#include "platform/math/position.h"
#include "platform/navigation/occupancy_map.h"

namespace QV::session {

/**
 * The distances from the cells of an area to the nearest that is not free, metres, up to `most`.
 * No cell beyond the map is free.
 */
cv::Mat_<float> roomIn(const OccupancyMap& map, const cv::Rect& area, float most);

/** The room about each place of a map. Metres. Reading is thread-safe. */
class QV_API RoomMap {
 public:
  /** Distances up to `most`. The map must outlive this. */
  RoomMap(const OccupancyMap& map, float most);

  /** Returns the distance from each cell to the nearest that is not free; beyond the map none
   * is. */
  const cv::Mat_<float>& getCells() const { return cells; }
  /** The same of the cell at a position in the world, 0 outside the map. */
  float find(const Math::Position2D& position) const;

 private:
  const Math::Pose2D toMap;
  const float resolution;
  cv::Mat_<float> cells;
};

}  // namespace QV::session
