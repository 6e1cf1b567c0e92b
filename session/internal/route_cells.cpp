#include "session/internal/route_cells.h"

#include <algorithm>

#include "session/internal/room_in.h"

namespace QV::session {
namespace {

/** More than a map has in a row. */
constexpr float kMostCells = 1e9f;

/** Returns how many of `count` places in a row follow a place, in the direction of `way`. */
int countAhead(int place, int way, int count) {
  if (way == 0) return count;
  return way > 0 ? count - 1 - place : place;
}

}  // namespace

RouteCells::RouteCells(const OccupancyMap& map, float most, float enough)
    : map(map),
      toMap(Math::pinv(map.getOrigin())),
      most(most),
      enough(enough),
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

int RouteCells::countRoomyAhead(const cv::Point& cell, const cv::Point& way) {
  const cv::Point block(cell.x % kSide / kBlock, cell.y % kSide / kBlock);
  const int index = block.y * kBlocks + block.x;
  if (!xTileOf(cell).roomy[static_cast<std::size_t>(index)]) return 0;
  return std::min(countAhead(cell.x % kBlock, way.x, kBlock),
                  countAhead(cell.y % kBlock, way.y, kBlock));
}

RouteCells::Tile RouteCells::xMakeTile(const cv::Point& corner) const {
  const cv::Mat_<float> room = roomIn(map, {corner, cv::Size(kSide, kSide)}, most);
  Tile tile{std::vector<Cell>(static_cast<std::size_t>(kSide) * kSide)};
  auto cell = tile.cells.begin();
  for (const float each : room) (cell++)->room = each;
  std::size_t block = 0;
  for (int y = 0; y < kSide; y += kBlock) {
    for (int x = 0; x < kSide; x += kBlock) {
      double least = 0.0;
      cv::minMaxLoc(room(cv::Rect(x, y, kBlock, kBlock)), &least);
      tile.roomy[block++] = least >= static_cast<double>(enough);
    }
  }
  return tile;
}

}  // namespace QV::session
