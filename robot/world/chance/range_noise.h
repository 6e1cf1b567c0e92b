#pragma once

#include <random>
#include <string>

#include "platform/api.h"
#include "robot/world/world_options.h"

namespace QV::robot {

/**
 * The noise of a real sensor on true ranges, as WorldOptions say; each sensor has chances of its
 * own. For one thread at a time.
 */
class QV_API RangeNoise {
 public:
  RangeNoise(const WorldOptions& options, const std::string& sensor);

  /** Metres; infinity, also of an infinite range, when it is lost. */
  float apply(float range);

 private:
  const float deviation;
  std::mt19937 generator;
  std::normal_distribution<float> error;
  std::bernoulli_distribution lost;
};

}  // namespace QV::robot
