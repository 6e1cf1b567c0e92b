#pragma once

#include <cmath>
#include <vector>

#include <boost/shared_ptr.hpp>

#include "platform/api.h"
#include "platform/math/position.h"
#include "platform/navigation/occupancy_map.h"
#include "robot/world/scene/internal/block.h"
#include "robot/world/scene/internal/person.h"
#include "robot/world/world_options.h"

namespace QV::robot {

inline float distanceBetween(const Math::Position2D& a, const Math::Position2D& b) {
  return std::hypot(a.x - b.x, a.y - b.y);
}

/**
 * The surroundings of the robot: the walls of the map, boxes, a floor at height 0 with holes, and
 * people, upright cylinders. Immutable; where people are is told each time.
 */
class QV_API Scene {
 public:
  /** Occupancies above this are solid. */
  static constexpr float kSolidAbove = OccupancyMap::kSolidAbove;

  /** Sizes that are not positive and numbers that are not finite throw std::invalid_argument. */
  Scene(boost::shared_ptr<const OccupancyMap> map, const WorldOptions& options);

  const OccupancyMap& getMap() const { return *map; }
  float getWallHeight() const { return wallHeight; }
  const std::vector<Block>& getBoxes() const { return boxes; }
  const std::vector<Block>& getHoles() const { return holes; }

  /** The range of what the ray meets first, in metres; infinity for nothing up to `reach`. */
  float castRay(const Ray& ray, float reach, const People& people) const;

  /** The range of the wall in the plane, infinity beyond `reach`; `heading` in the map. */
  float findWall(const Math::Position2D& from, float heading, float reach) const;

  /** The nearest of all that stands in the way of a body of some height; infinite if nothing is
   * `within`. */
  struct Nearest {
    /** The distance from its surface, 0 inside of it. */
    float distance;
    Math::Position2D position;
  };
  Nearest findNearest(const Math::Position2D& position, float within, float height,
                      const People& people) const;

 private:
  float xCastToFloor(const Ray& ray) const;
  float xCastToWall(const Ray& ray, float reach) const;
  void xFindNearestCell(const Math::Position2D& position, float within, Nearest& nearest) const;

  const boost::shared_ptr<const OccupancyMap> map;
  const Math::Pose2D mapInverse;
  const float wallHeight;
  std::vector<Block> boxes;
  std::vector<Block> holes;
};

}  // namespace QV::robot
