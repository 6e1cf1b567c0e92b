#pragma once

#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include <boost/shared_ptr.hpp>

#include "platform/api.h"
#include "platform/math/pose2d.h"
#include "platform/math/position.h"
#include "platform/math/transform.h"
#include "platform/navigation/occupancy_map.h"
#include "robot/world/world_options.h"

namespace QV::robot {

/** A line in the map from `origin` along `direction`, of unit length; z counts from the floor. */
struct QV_API Ray {
  Math::Position3D origin;
  Math::Position3D direction;

  /** Makes the ray of a sensor whose frame in the map is given: along its x axis. */
  static Ray ahead(const Math::Transform& frame) {
    return {Math::position3DFromTransform(frame), {frame(0, 0), frame(1, 0), frame(2, 0)}};
  }

  /** Returns the point at a range, in metres. */
  Math::Position3D at(float range) const {
    return {origin.x + range * direction.x, origin.y + range * direction.y,
            origin.z + range * direction.z};
  }
};

/** A part of a ray: the ranges between which it lies, metres. */
struct QV_API Stretch {
  float from;
  float to;
};

class MotionService;
class Scene;
struct UnitParts;

/** The positions of all that moves, at one time. */
struct QV_API Moment {
  /** The root link in the map. */
  Math::Pose2D robot;
  /** The people in the map: upright cylinders, 0.2 m in radius and 1.7 m high. */
  std::vector<Math::Position2D> people = {};
  /** The direction in which the body touches something, in the root link's frame, radians. */
  std::optional<float> contact = std::nullopt;
};

/**
 * The surroundings of the robot's sensors: the walls of the map, boxes, a floor at height 0 with
 * holes, and people. Lengths are metres. Not copyable; thread-safe.
 */
class QV_API Surroundings {
 public:
  ~Surroundings();
  Surroundings(const Surroundings&) = delete;
  Surroundings& operator=(const Surroundings&) = delete;

  const OccupancyMap& getMap() const;

  /** Sets the moment. Only the owner of the robot's motion calls it. */
  void setMoment(const Moment& moment);
  Moment getMoment() const;

  /** The frame of a sensor, joint or link in the map; std::invalid_argument for an unknown name. */
  Math::Transform frameInMap(const std::string& name, const Moment& moment) const;
  /** The same frame, in the ground frame. */
  Math::Transform frameInGround(const std::string& name) const;

  /** The range of the first obstacle on the ray; infinity if there is none up to `reach`. */
  float castRay(const Ray& ray, float reach, const Moment& moment) const;

  /** The links that touch something now, for a unit that senses touches. */
  void setTouched(const std::set<std::string>& links);
  std::set<std::string> getTouched() const;

 private:
  friend struct UnitParts;
  /**
   * Throws std::invalid_argument for a box or hole without a positive size, a number that is not
   * finite, or a null map.
   */
  Surroundings(boost::shared_ptr<const OccupancyMap> map, const WorldOptions& options,
               boost::shared_ptr<MotionService> motion);

  const std::unique_ptr<const Scene> scene;
  const boost::shared_ptr<MotionService> motion;
  mutable std::mutex mutex;
  Moment moment;
  std::set<std::string> touched;
};

}  // namespace QV::robot
