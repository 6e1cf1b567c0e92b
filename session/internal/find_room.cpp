#include "session/internal/find_room.h"

#include <cmath>

#include "session/internal/room_in.h"

namespace QV::session {
namespace {

constexpr float kEnough = 1.0f;

}  // namespace

Math::Pose2D findRoom(const OccupancyMap& map) {
  const cv::Mat_<float> room = roomIn(map, {0, 0, map.getWidth(), map.getHeight()}, kEnough);
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

}  // namespace QV::session
