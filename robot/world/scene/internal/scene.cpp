#include "robot/world/scene/internal/scene.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <stdexcept>

#include "platform/navigation/occ_map_simulate_scan.h"

namespace QV::robot {
namespace {

constexpr float kOpenWay = std::numeric_limits<float>::infinity();
// Below, a ray goes straight up or down.
constexpr float kSteep = 1e-6f;

Block makeBlock(const char* what, const Math::Pose2D& pose, float length, float width, float bottom,
                float top) {
  const bool makesSense = std::isfinite(pose.x + pose.y + pose.theta) && std::isfinite(length) &&
                          std::isfinite(width) && std::isfinite(bottom) && std::isfinite(top) &&
                          length > 0.0f && width > 0.0f && bottom < top;
  if (makesSense) return {pose, length, width, bottom, top};
  throw std::invalid_argument(std::string("WorldOptions: a ") + what +
                              " of finite pose and positive size expected");
}

float castToPerson(const Ray& ray, const Math::Position2D& person) {
  const auto inside = clipPerson(ray, person);
  if (!inside) return kOpenWay;
  const float height = ray.at(inside->from).z;
  return height >= 0.0f && height <= kPersonHeight ? inside->from : kOpenWay;
}

/** The cells of a row or column within `reach` of a position, and one more at either end of all. */
struct Span {
  int first;
  int last;
};

Span spanAbout(float centre, float reach, int count) {
  const auto most = static_cast<float>(count);
  return {static_cast<int>(std::floor(std::clamp(centre - reach, -1.0f, most))),
          static_cast<int>(std::floor(std::clamp(centre + reach, -1.0f, most)))};
}

/** The nearest position of a cell, in cells. */
Math::Position2D nearestOfCell(const Math::Position2D& point, int column, int row) {
  const auto left = static_cast<float>(column);
  const auto low = static_cast<float>(row);
  return {std::clamp(point.x, left, left + 1.0f), std::clamp(point.y, low, low + 1.0f)};
}

}  // namespace

Scene::Scene(boost::shared_ptr<const OccupancyMap> given, const WorldOptions& options)
    : map(std::move(given)),
      mapInverse(map ? Math::pinv(map->getOrigin()) : Math::Pose2D()),
      wallHeight(options.wallHeight) {
  if (!map) throw std::invalid_argument("VirtualRobot: a map expected, none given");
  for (const WorldBox& box : options.boxes) {
    boxes.push_back(makeBlock("box", box.pose, box.length, box.width, box.bottom, box.top));
  }
  for (const FloorHole& hole : options.holes) {
    holes.push_back(makeBlock("hole", hole.pose, hole.length, hole.width, -hole.depth, 0.0f));
  }
}

float Scene::castRay(const Ray& ray, float reach, const People& people) const {
  float range = std::min(xCastToFloor(ray), reach);
  for (const Block& box : boxes) {
    if (const auto inside = box.clip(ray)) range = std::min(range, inside->from);
  }
  for (const Math::Position2D& person : people) {
    range = std::min(range, castToPerson(ray, person));
  }
  range = std::min(range, xCastToWall(ray, range));
  return range < reach ? range : kOpenWay;
}

float Scene::xCastToFloor(const Ray& ray) const {
  if (!(ray.direction.z < 0.0f)) return kOpenWay;
  const float floor = std::max(0.0f, -ray.origin.z / ray.direction.z);
  for (const Block& hole : holes) {
    const auto inside = hole.clip(ray);
    if (inside && inside->from <= floor && floor < inside->to) return inside->to;
  }
  return floor;
}

float Scene::xCastToWall(const Ray& ray, float reach) const {
  const float speed = std::hypot(ray.direction.x, ray.direction.y);
  if (speed < kSteep) return kOpenWay;
  const float heading = std::atan2(ray.direction.y, ray.direction.x);
  const float range = findWall({ray.origin.x, ray.origin.y}, heading, reach * speed) / speed;
  return ray.at(range).z <= wallHeight ? range : kOpenWay;
}

float Scene::findWall(const Math::Position2D& from, float heading, float reach) const {
  std::vector<RangeReading> readings;
  occMapSimulateScan(*map, {0.0f, reach, 0.0f, 1}, {from.x, from.y, heading}, readings,
                     kSolidAbove);
  return readings.empty() || readings[0].status != 0 ? kOpenWay : readings[0].range;
}

Scene::Nearest Scene::findNearest(const Math::Position2D& position, float within, float height,
                                  const People& people) const {
  Nearest nearest{kOpenWay, position};
  const auto consider = [&](float distance, const Math::Position2D& where) {
    if (distance <= within && distance < nearest.distance) nearest = {distance, where};
  };
  xFindNearestCell(position, within, nearest);
  for (const Block& box : boxes) {
    if (box.getBottom() >= height || box.getTop() <= 0.0f) continue;
    const Math::Position2D where = box.nearestTo(position);
    consider(distanceBetween(position, where), where);
  }
  for (const Math::Position2D& person : people) {
    consider(std::max(0.0f, distanceBetween(position, person) - kPersonRadius), person);
  }
  return nearest;
}

void Scene::xFindNearestCell(const Math::Position2D& position, float within,
                             Nearest& nearest) const {
  const float resolution = map->getResolution();
  const Math::Position2D local = mapInverse * position;
  const Math::Position2D point(local.x / resolution, local.y / resolution);
  const Span columns = spanAbout(point.x, within / resolution, map->getWidth());
  const Span rows = spanAbout(point.y, within / resolution, map->getHeight());
  if (!map->findOccupancy(position)) nearest.distance = 0.0f;
  for (int row = rows.first; row <= rows.last; ++row) {
    for (int column = columns.first; column <= columns.last; ++column) {
      // The world ends where the map does.
      if (map->isInside(column, row) && map->getOccupancy(column, row) <= kSolidAbove) continue;
      const Math::Position2D where = nearestOfCell(point, column, row);
      const float distance = distanceBetween(point, where) * resolution;
      if (distance > within || distance >= nearest.distance) continue;
      nearest = {distance,
                 map->getOrigin() * Math::Position2D(where.x * resolution, where.y * resolution)};
    }
  }
}

}  // namespace QV::robot
