#include "apps/run/find_room.h"

#include <algorithm>
#include <cmath>

#include <opencv2/imgproc.hpp>

namespace QV::app {
namespace {

// As for the rays of simulated sensors and the walls of an embedded robot's world.
constexpr float kOccupiedAbove = 0.4f;
constexpr float kEnough = 1.0f;

/** Metres from each cell to the nearest that is not free, at most kEnough; beyond the map is none.
 */
cv::Mat_<float> roomAround(const OccupancyMap& map) {
  cv::Mat_<uchar> free(map.getHeight() + 2, map.getWidth() + 2, uchar{0});
  for (int row = 0; row < map.getHeight(); ++row) {
    for (int column = 0; column < map.getWidth(); ++column) {
      free(row + 1, column + 1) = map.getOccupancy(column, row) <= kOccupiedAbove;
    }
  }
  cv::Mat_<float> room;
  cv::distanceTransform(free, room, cv::DIST_L2, cv::DIST_MASK_PRECISE);
  room *= map.getResolution();
  return cv::min(room, kEnough)(cv::Rect(1, 1, map.getWidth(), map.getHeight()));
}

}  // namespace

Math::Pose2D findRoom(const OccupancyMap& map) {
  const cv::Mat_<float> room = roomAround(map);
  double most = 0.0;
  cv::minMaxLoc(room, nullptr, &most);
  const cv::Point middle(map.getWidth() / 2, map.getHeight() / 2);
  cv::Point best = middle;
  double nearest = INFINITY;
  for (cv::Point cell; cell.y < room.rows; ++cell.y) {
    for (cell.x = 0; cell.x < room.cols; ++cell.x) {
      const double away = cv::norm(cell - middle);
      if (most == 0.0 || room(cell) < most || away >= nearest) continue;
      nearest = away;
      best = cell;
    }
  }
  const Math::Position2D centre = map.getCellCentre(best.x, best.y);
  return {centre.x, centre.y, 0.0f};
}

}  // namespace QV::app
