#include "robot/world/chance/range_noise.h"

#include <algorithm>
#include <limits>

#include "robot/world/chance/internal/generator.h"

namespace QV::robot {

RangeNoise::RangeNoise(const WorldOptions& options, const std::string& sensor)
    : deviation(options.rangeNoise),
      generator(makeGenerator(options.seed, sensor)),
      lost(options.dropOuts) {}

float RangeNoise::apply(float range) {
  if (lost.p() > 0.0 && lost(generator)) return std::numeric_limits<float>::infinity();
  if (deviation == 0.0f) return range;
  return std::max(0.0f, range + deviation * error(generator));
}

}  // namespace QV::robot
