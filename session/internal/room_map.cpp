#include "session/internal/room_map.h"

#include <cmath>

#include <opencv2/imgproc.hpp>

namespace QV::session {
namespace {

// The limit is the same as for rays and for the walls of a virtual robot's world.
constexpr float kBlockedAbove = OccupancyMap::kSolidAbove;

}  // namespace

RoomMap::RoomMap(const OccupancyMap& map, float most)
    : toMap(Math::pinv(map.getOrigin())), resolution(map.getResolution()) {
  cv::Mat_<uchar> free(map.getHeight() + 2, map.getWidth() + 2, uchar{0});
  for (int row = 0; row < map.getHeight(); ++row) {
    for (int column = 0; column < map.getWidth(); ++column) {
      free(row + 1, column + 1) = map.getOccupancy(column, row) <= kBlockedAbove;
    }
  }
  cv::Mat_<float> room;
  cv::distanceTransform(free, room, cv::DIST_L2, cv::DIST_MASK_PRECISE);
  room *= resolution;
  cells = cv::min(room, most)(cv::Rect(1, 1, map.getWidth(), map.getHeight()));
}

float RoomMap::find(const Math::Position2D& position) const {
  const Math::Position2D inMap = toMap * position;
  // What is far out has no cell of any number.
  const float column = inMap.x / resolution;
  const float row = inMap.y / resolution;
  const bool inside = column >= 0.0f && row >= 0.0f && column < static_cast<float>(cells.cols) &&
                      row < static_cast<float>(cells.rows);
  return inside ? cells(static_cast<int>(row), static_cast<int>(column)) : 0.0f;
}

}  // namespace QV::session
