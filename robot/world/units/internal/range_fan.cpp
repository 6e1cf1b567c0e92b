#include "robot/world/units/internal/range_fan.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "platform/model/sensor_properties.h"

namespace QV::robot {

RangeFan::RangeFan(const Model::SensorConfig& config, std::size_t rayCount,
                   const UnitContext& context)
    : context(context),
      sensor(config.name),
      maxRange(Model::SensorProperties(config).getFinite("maximumDetectionDistance")) {
  const float aperture = Model::SensorProperties(config).getAngle("horizontalAngularRange");
  const float step = rayCount > 1 ? aperture / static_cast<float>(rayCount - 1) : 0.0f;
  const float middle = 0.5f * static_cast<float>(rayCount - 1);
  for (std::size_t i = 0; i < rayCount; ++i) {
    const float angle = (static_cast<float>(i) - middle) * step;
    directions.emplace_back(std::cos(angle), std::sin(angle), 0.0f);
  }
}

std::vector<Ray> RangeFan::aim(const Moment& moment) const {
  const Math::Transform frame = context.getSurroundings().frameInMap(sensor, moment);
  const Math::Position3D origin = Math::position3DFromTransform(frame);
  std::vector<Ray> rays;
  rays.reserve(directions.size());
  for (const Math::Position3D& direction : directions) {
    const Math::Position3D end = frame * direction;
    rays.push_back({origin, {end.x - origin.x, end.y - origin.y, end.z - origin.z}});
  }
  return rays;
}

std::vector<float> RangeFan::measure(const std::vector<Ray>& rays, const Moment& moment) const {
  std::vector<float> ranges;
  ranges.reserve(rays.size());
  const Surroundings& surroundings = context.getSurroundings();
  for (const Ray& ray : rays) ranges.push_back(surroundings.castRay(ray, maxRange, moment));
  return ranges;
}

float RangeFan::measureNearest() const {
  const Moment moment = context.getSurroundings().getMoment();
  const std::vector<float> ranges = measure(aim(moment), moment);
  return ranges.empty() ? std::numeric_limits<float>::infinity()
                        : *std::min_element(ranges.begin(), ranges.end());
}

}  // namespace QV::robot
