#include "platform/navigation/occupancy_map.h"

#include <cmath>
#include <stdexcept>
#include <string>

namespace QV {

OccupancyMap::OccupancyMap(int width, int height, float resolution, const Math::Pose2D& origin,
                           float occupancy)
    : width(width), height(height), resolution(resolution), origin(origin) {
  if (width <= 0 || height <= 0) {
    throw std::invalid_argument("OccupancyMap: a size above 0 expected, " + std::to_string(width) +
                                " by " + std::to_string(height) + " given");
  }
  if (!std::isfinite(resolution) || resolution <= 0.0f) {
    throw std::invalid_argument("OccupancyMap: a resolution above 0 expected, " +
                                std::to_string(resolution) + " given");
  }
  if (!std::isfinite(origin.x) || !std::isfinite(origin.y) || !std::isfinite(origin.theta)) {
    throw std::invalid_argument("OccupancyMap: the origin is not finite");
  }
  cells.assign(static_cast<std::size_t>(width) * static_cast<std::size_t>(height), occupancy);
}

float OccupancyMap::getOccupancy(int column, int row) const {
  return cells[xIndex(column, row)];
}

void OccupancyMap::setOccupancy(int column, int row, float occupancy) {
  if (!(occupancy >= 0.0f && occupancy <= 1.0f)) {
    throw std::invalid_argument("OccupancyMap: an occupancy from 0 to 1 expected, " +
                                std::to_string(occupancy) + " given");
  }
  cells[xIndex(column, row)] = occupancy;
}

std::size_t OccupancyMap::xIndex(int column, int row) const {
  if (!isInside(column, row)) {
    throw std::out_of_range("OccupancyMap: no cell " + std::to_string(column) + ", " +
                            std::to_string(row) + " in " + std::to_string(width) + " by " +
                            std::to_string(height));
  }
  return static_cast<std::size_t>(row) * static_cast<std::size_t>(width) +
         static_cast<std::size_t>(column);
}

}  // namespace QV
