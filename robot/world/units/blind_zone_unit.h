#pragma once

#include <random>
#include <string>

#include "robot/world/faults/fault_channel.h"
#include "robot/world/units/range_fan.h"
#include "robot/world/units/unit_context.h"

namespace QV::robot {

/**
 * A detector of whatever is in its zone: its key says 1 when anything is, else 0, and holds no
 * number while it does not answer. For one thread at a time.
 */
class BlindZoneUnit {
 public:
  /** A configuration with one key. */
  BlindZoneUnit(const Model::SensorConfig& config, const UnitContext& context);

  void measure(ko::Clock::time_point now);

 private:
  const std::string key;
  const UnitContext context;
  const RangeFan fan;
  std::mt19937 nonsense;
  FaultChannel<float> channel;
};

}  // namespace QV::robot
