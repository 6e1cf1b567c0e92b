#include "platform/navigation/occupancy_map.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>
#include <string>
#include <utility>

#include "platform/navigation/internal/map_inside.h"

namespace QV {
namespace {

std::string sizeText(int width, int height) {
  return std::to_string(width) + " by " + std::to_string(height);
}

std::size_t cellCount(int width, int height) {
  if (std::min(width, height) < 1 || std::max(width, height) > OccupancyMap::kMaxSide) {
    throw std::invalid_argument("OccupancyMap: sides from 1 to " +
                                std::to_string(OccupancyMap::kMaxSide) + " cells expected, " +
                                sizeText(width, height) + " given");
  }
  return static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
}

void checkOccupancy(float occupancy) {
  if (occupancy >= 0.0f && occupancy <= 1.0f) return;
  throw std::invalid_argument("OccupancyMap: an occupancy from 0 to 1 expected, " +
                              std::to_string(occupancy) + " given");
}

}  // namespace

OccupancyMap::OccupancyMap(int width, int height, float resolution, const Math::Pose2D& origin,
                           float occupancy)
    : OccupancyMap(width, height, resolution, origin,
                   std::vector<float>(cellCount(width, height), occupancy)) {}

OccupancyMap::OccupancyMap(int width, int height, float resolution, const Math::Pose2D& origin,
                           std::vector<float> cells)
    : width(width),
      height(height),
      resolution(resolution),
      origin(origin),
      cells(std::move(cells)),
      inside(new detail::MapInside{{origin, resolution}, {}}) {
  if (this->cells.size() != cellCount(width, height)) {
    throw std::invalid_argument("OccupancyMap: " + std::to_string(this->cells.size()) +
                                " cells given for " + sizeText(width, height));
  }
  if (!std::isfinite(resolution) || resolution <= 0.0f) {
    throw std::invalid_argument("OccupancyMap: a resolution above 0 expected, " +
                                std::to_string(resolution) + " given");
  }
  if (!std::isfinite(origin.x) || !std::isfinite(origin.y) || !std::isfinite(origin.theta)) {
    throw std::invalid_argument("OccupancyMap: the origin is not finite");
  }
  std::for_each(this->cells.begin(), this->cells.end(), checkOccupancy);
}

OccupancyMap::~OccupancyMap() = default;

OccupancyMap::OccupancyMap(const OccupancyMap& other)
    : width(other.width),
      height(other.height),
      resolution(other.resolution),
      origin(other.origin),
      shift(other.shift),
      cells(other.cells),
      inside(std::make_unique<detail::MapInside>(*other.inside)) {}

OccupancyMap::OccupancyMap(OccupancyMap&& other) noexcept = default;

OccupancyMap& OccupancyMap::operator=(const OccupancyMap& other) {
  return *this = OccupancyMap(other);
}

OccupancyMap& OccupancyMap::operator=(OccupancyMap&& other) noexcept = default;

float OccupancyMap::getOccupancy(int column, int row) const {
  return cells[xIndex(column, row)];
}

void OccupancyMap::setOccupancy(int column, int row, float occupancy) {
  checkOccupancy(occupancy);
  cells[xIndex(column, row)] = occupancy;
  inside->scanStores.setOccupancy(column, row, occupancy);
}

std::optional<float> OccupancyMap::findOccupancy(const Math::Position2D& position) const {
  const detail::GridPoint point = inside->gridFrame.toGrid(position);
  const bool inside = point.x >= 0.0 && point.x < width && point.y >= 0.0 && point.y < height;
  if (!inside) return std::nullopt;
  return getOccupancy(static_cast<int>(point.x), static_cast<int>(point.y));
}

Math::Position2D OccupancyMap::getCellCentre(int column, int row) const {
  return inside->gridFrame.toWorld({column + 0.5, row + 0.5});
}

std::size_t OccupancyMap::xIndex(int column, int row) const {
  if (!isInside(column, row)) {
    throw std::out_of_range("OccupancyMap: no cell " + std::to_string(column) + ", " +
                            std::to_string(row) + " in " + sizeText(width, height));
  }
  return static_cast<std::size_t>(row) * static_cast<std::size_t>(width) +
         static_cast<std::size_t>(column);
}

}  // namespace QV
