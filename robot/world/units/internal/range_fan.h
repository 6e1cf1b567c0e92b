#pragma once

#include <string>
#include <vector>

#include "platform/model/sensor_config.h"
#include "robot/world/units/unit_context.h"

namespace QV::robot {

/** The rays of a range sensor, spread over its aperture in the xy plane of its frame. */
class RangeFan {
 public:
  RangeFan(const Model::SensorConfig& config, std::size_t rayCount, const UnitContext& context);

  /** Metres. */
  float getMaxRange() const { return maxRange; }
  std::size_t getRayCount() const { return directions.size(); }
  /** Returns a ray's direction, of unit length, in the sensor's frame; rays go from the right
   * edge to the left. */
  const Math::Position3D& getDirection(std::size_t ray) const { return directions[ray]; }

  /** The rays as they lie in the map now. */
  std::vector<Ray> aim(const Moment& moment) const;
  /** The range of each; infinity for nothing up to the maximum. */
  std::vector<float> measure(const std::vector<Ray>& rays, const Moment& moment) const;
  /** The least of all now. */
  float measureNearest() const;

 private:
  const UnitContext context;
  const std::string sensor;
  const float maxRange;
  std::vector<Math::Position3D> directions;
};

}  // namespace QV::robot
