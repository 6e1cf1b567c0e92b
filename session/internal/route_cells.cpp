#include "session/internal/route_cells.h"

#include "session/internal/room_in.h"

namespace QV::session {
namespace {

/** More than a map has in a row. */
constexpr float kMostCells = 1e9f;

}  // namespace

RouteCells::RouteCells(const OccupancyMap& map, float most)
    : map(map),
      toMap(Math::pinv(map.getOrigin())),
      most(most),
      columns((map.getWidth() + kSide - 1) / kSide),
      tiles(static_cast<std::size_t>(columns * ((map.getHeight() + kSide - 1) / kSide))) {}

cv::Point RouteCells::cellOf(const Math::Position2D& position) const {
  const Math::Position2D inMap = toMap * position;
  const auto numberOf = [this](float along) {
    const float number = along / map.getResolution();
    // What is far out has no cell of any number.
    return number >= 0.0f && number < kMostCells ? static_cast<int>(number) : -1;
  };
  return {numberOf(inMap.x), numberOf(inMap.y)};
}

float RouteCells::findRoom(const Math::Position2D& position) {
  const cv::Point cell = cellOf(position);
  return map.isInside(cell.x, cell.y) ? at(cell).room : 0.0f;
}

std::vector<RouteCells::Cell> RouteCells::xMakeTile(const cv::Point& corner) const {
  const cv::Mat_<float> room = roomIn(map, {corner, cv::Size(kSide, kSide)}, most);
  std::vector<Cell> tile(static_cast<std::size_t>(kSide) * kSide);
  auto cell = tile.begin();
  for (const float each : room) (cell++)->room = each;
  return tile;
}

}  // namespace QV::session
