#include "session/internal/room_in.h"

#include <algorithm>
#include <cmath>

#include <opencv2/imgproc.hpp>

namespace QV::session {
namespace {

// The limit is the same as for rays and for the walls of a virtual robot's world.
constexpr float kBlockedAbove = OccupancyMap::kSolidAbove;

}  // namespace

cv::Mat_<float> roomIn(const OccupancyMap& map, const cv::Rect& area, float most) {
  const cv::Rect whole(0, 0, map.getWidth(), map.getHeight());
  // What is farther away than `most`, or lies beyond the map's rim, changes nothing.
  const int margin = static_cast<int>(
      std::min(most / map.getResolution(), static_cast<float>(whole.width + whole.height)));
  const cv::Rect rim(whole.x - 1, whole.y - 1, whole.width + 2, whole.height + 2);
  const cv::Rect seen = rim & cv::Rect(area.x - margin - 1, area.y - margin - 1,
                                       area.width + 2 * margin + 2, area.height + 2 * margin + 2);
  cv::Mat_<uchar> free(seen.size(), uchar{0});
  const cv::Rect inside = seen & whole;
  for (int row = inside.y; row < inside.br().y; ++row) {
    for (int column = inside.x; column < inside.br().x; ++column) {
      free(row - seen.y, column - seen.x) = map.getOccupancy(column, row) <= kBlockedAbove;
    }
  }
  cv::Mat_<float> room;
  cv::distanceTransform(free, room, cv::DIST_L2, cv::DIST_MASK_PRECISE);
  room *= map.getResolution();
  cv::Mat_<float> cells(area.size(), 0.0f);
  const cv::Rect both = seen & area;
  cv::min(room(both - seen.tl()), most, cells(both - area.tl()));
  return cells;
}

}  // namespace QV::session
