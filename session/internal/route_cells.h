#pragma once

#include <bitset>
#include <cmath>
#include <cstddef>
#include <vector>

#include <opencv2/core.hpp>

#include "platform/api.h"
#include "platform/math/pose2d.h"
#include "platform/math/position.h"
#include "platform/navigation/occupancy_map.h"

namespace QV::session {

/**
 * The cells of a map as a search for a path sees them, in tiles made when they are first asked for:
 * a search costs as much as the cells that it looks at, whatever the size of the map.
 */
class QV_API RouteCells {
 public:
  static constexpr uchar kNoStep = 9;

  struct Cell {
    /** Metres to the nearest cell that is not free, as roomIn tells. */
    float room = 0.0f;
    /** The length of the path to it, in cells. */
    float cost = INFINITY;
    /** The last step of that path, of the nine to the neighbours and the cell itself. */
    uchar step = kNoStep;
  };

  /** Computes room up to `most`; a robot needs `enough`, metres. The map must outlive this. */
  RouteCells(const OccupancyMap& map, float most, float enough = INFINITY);

  /** Returns a cell, which must be inside the map. The reference stays valid. */
  Cell& at(const cv::Point& cell) {
    const int cellIndex = cell.y % kSide * kSide + cell.x % kSide;
    return xTileOf(cell).cells[static_cast<std::size_t>(cellIndex)];
  }
  /**
   * Returns how many cells of each coordinate lie ahead of a cell inside the map, in the direction
   * `way`, that have enough room, as all cells between them have. It may count too few.
   */
  int countRoomyAhead(const cv::Point& cell, const cv::Point& way);

  /** Returns the cell at a position in the world; it may lie outside the map. */
  cv::Point cellOf(const Math::Position2D& position) const;
  /** Returns the room at a position in the world, none outside the map. */
  float findRoom(const Math::Position2D& position);

 private:
  static constexpr int kSide = 128;
  static constexpr int kBlock = 16;
  static constexpr int kBlocks = kSide / kBlock;
  static constexpr std::size_t kBlockCount = std::size_t{kBlocks} * kBlocks;

  struct Tile {
    std::vector<Cell> cells = {};
    /** Blocks whose cells all have enough room, row by row. */
    std::bitset<kBlockCount> roomy = {};
  };

  Tile& xTileOf(const cv::Point& cell) {
    const int tileIndex = cell.y / kSide * columns + cell.x / kSide;
    auto& tile = tiles[static_cast<std::size_t>(tileIndex)];
    if (tile.cells.empty()) tile = xMakeTile(cell / kSide * kSide);
    return tile;
  }
  Tile xMakeTile(const cv::Point& corner) const;

  const OccupancyMap& map;
  const Math::Pose2D toMap;
  const float most;
  const float enough;
  const int columns;
  std::vector<Tile> tiles;
};

}  // namespace QV::session
