#include "outlets/picture/internal/world_area.h"

#include <algorithm>
#include <cmath>

namespace QV::outlets {
namespace {

// Larger maps, and ways far from the map, are shown around the robot's way only, metres.
constexpr double kWidestArea = 45.0;
constexpr WorldArea kNothing{INFINITY, INFINITY, -INFINITY, -INFINITY};

double sideOf(const WorldArea& area) {
  return std::max(area.right - area.left, area.top - area.bottom);
}

WorldArea withPosition(const WorldArea& area, const Math::Position2D& position, double margin) {
  return {std::min(area.left, position.x - margin), std::min(area.bottom, position.y - margin),
          std::max(area.right, position.x + margin), std::max(area.top, position.y + margin)};
}

// The map's origin may be turned.
WorldArea areaOf(const OccupancyMap& map) {
  const float width = static_cast<float>(map.getWidth()) * map.getResolution();
  const float height = static_cast<float>(map.getHeight()) * map.getResolution();
  WorldArea area = kNothing;
  for (const auto& corner : {Math::Position2D(0.0f, 0.0f), Math::Position2D(width, 0.0f),
                             Math::Position2D(0.0f, height), Math::Position2D(width, height)}) {
    area = withPosition(area, map.getOrigin() * corner, 0.0);
  }
  return area;
}

// The robot and its fans show whole, also at the map's edge or outside it.
WorldArea withReading(WorldArea area, const session::Snapshot& snapshot) {
  constexpr double kMargin = 0.3;
  area = withPosition(area, Math::position2DFromPose2D(snapshot.pose), kMargin);
  for (const auto& sensor : snapshot.sensors) {
    if (!sensor.view) continue;
    for (const auto& position : arcOf(*sensor.view, sensor.view->fieldOfView.maxRange)) {
      area = withPosition(area, position, kMargin);
    }
  }
  return area;
}

WorldArea aroundWay(const std::vector<Math::Pose2D>& way, const session::Snapshot& snapshot) {
  double margin = 3.0;
  for (const auto& sensor : snapshot.sensors) {
    if (sensor.view) margin = std::max(margin, sensor.view->fieldOfView.maxRange + 1.0);
  }
  WorldArea area = kNothing;
  for (const auto& pose : way) {
    area = withPosition(area, Math::position2DFromPose2D(pose), margin);
  }
  return area;
}

}  // namespace

std::vector<Math::Position2D> arcOf(const session::SensorState::View& view, float range,
                                    int count) {
  std::vector<Math::Position2D> positions;
  for (int i = 0; i <= count; ++i) {
    const float share = static_cast<float>(i) / static_cast<float>(count) - 0.5f;
    positions.push_back(view.apex * Math::Position2D::fromPolarCoordinates(
                                        range, share * view.fieldOfView.angularRange));
  }
  return positions;
}

WorldArea findAreaToShow(const std::vector<Math::Pose2D>& way, const session::Snapshot& snapshot) {
  if (!snapshot.map) return aroundWay(way, snapshot);
  const WorldArea whole = areaOf(*snapshot.map);
  if (sideOf(whole) > kWidestArea) return aroundWay(way, snapshot);
  const WorldArea all = withReading(whole, snapshot);
  return sideOf(all) <= 2.0 * kWidestArea ? all : aroundWay(way, snapshot);
}

}  // namespace QV::outlets
