#pragma once

#include <memory>
#include <string>

#include "platform/model/sensor_config.h"
#include "robot/world/faults/fault_channel.h"
#include "robot/world/units/internal/garbage.h"
#include "robot/world/units/internal/range_fan.h"
#include "robot/world/units/sensor_unit.h"
#include "robot/world/units/unit_context.h"

namespace QV::robot {

/**
 * A detector of whatever is in its zone: its key says 1 when anything is, else 0, and holds no
 * number while it does not answer.
 */
class BlindZoneUnit : public SensorUnit {
 public:
  /** A configuration with one key. */
  BlindZoneUnit(const Model::SensorConfig& config, const UnitContext& context);

  void measure(ko::Clock::time_point now) override;

 private:
  const std::string key;
  const UnitContext context;
  const RangeFan fan;
  Garbage garbage;
  FaultChannel<float> channel;
};

/** Null for a configuration without its one key. */
std::unique_ptr<SensorUnit> makeBlindZoneUnit(const Model::SensorConfig& config,
                                              const UnitContext& context);

}  // namespace QV::robot
