#pragma once

#include <string>

#include "platform/model/sensor_config.h"
#include "robot/world/chance/range_noise.h"
#include "robot/world/faults/fault_channel.h"
#include "robot/world/units/sensor_unit.h"
#include "robot/world/units/unit_context.h"

/** Measures along its x axis how far the floor is, and writes it to the sensor's memory key. */
class CliffUnit : public QV::robot::SensorUnit {
 public:
  CliffUnit(const QV::Model::SensorConfig& config, const QV::robot::UnitContext& context)
      : SensorUnit(config.name, context.getOptions().sonarPeriod),
        key(config.memoryKeys.at(0)),
        context(context),
        noise(context.getOptions(), config.name),
        channel(
            context.getFaults(config.name), /* garbage */ [](float) { return -1.0f; },
            /* wrong */ [](float range) { return QV::robot::kFalseShare * range; }) {}

  void measure(ko::Clock::time_point now) override {
    const QV::robot::Surroundings& around = context.getSurroundings();
    const QV::robot::Moment moment = around.getMoment();
    const auto ray = QV::robot::Ray::ahead(around.frameInMap(getName(), moment));
    const auto sample = channel.pass(noise.apply(around.castRay(ray, kReach, moment)), now);
    if (!sample) return context.withdraw(key);
    context.write(key, sample->value);
  }

 private:
  static constexpr float kReach = 5.0f;

  const std::string key;
  const QV::robot::UnitContext context;
  QV::robot::RangeNoise noise;
  QV::robot::FaultChannel<float> channel;
};
