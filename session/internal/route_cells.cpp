#include "session/internal/route_cells.h"

#include "session/internal/room_map.h"

namespace QV::session {

RouteCells::RouteCells(const OccupancyMap& map, float most)
    : map(map),
      most(most),
      columns((map.getWidth() + kSide - 1) / kSide),
      tiles(static_cast<std::size_t>(columns * ((map.getHeight() + kSide - 1) / kSide))) {}

std::vector<RouteCells::Cell> RouteCells::xMakeTile(const cv::Point& corner) const {
  const cv::Mat_<float> room = roomIn(map, {corner, cv::Size(kSide, kSide)}, most);
  std::vector<Cell> tile(static_cast<std::size_t>(kSide) * kSide);
  for (std::size_t i = 0; i < tile.size(); ++i) {
    tile[i].room = room(static_cast<int>(i) / kSide, static_cast<int>(i) % kSide);
  }
  return tile;
}

}  // namespace QV::session
