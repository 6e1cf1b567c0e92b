#include "robot/world/units/internal/blind_zone_unit.h"

#include <array>
#include <cmath>
#include <limits>

namespace QV::robot {
namespace {

constexpr std::size_t kRayCount = 15;
constexpr std::array<float, 4> kFalseFlags{std::numeric_limits<float>::quiet_NaN(), -1.0f, 0.5f,
                                           1e30f};

}  // namespace

BlindZoneUnit::BlindZoneUnit(const Model::SensorConfig& config, const UnitContext& context)
    : SensorUnit(config.name, context.getOptions().sonarPeriod),
      key(config.memoryKeys.at(0)),
      context(context),
      fan(config, kRayCount, context),
      garbage(context, config.name),
      channel(
          context.getFaults(config.name), [this](float) { return garbage.pick(kFalseFlags); },
          [](float detected) { return 1.0f - detected; }) {}

void BlindZoneUnit::measure(ko::Clock::time_point now) {
  const float detected = std::isinf(fan.measureNearest()) ? 0.0f : 1.0f;
  const auto sample = channel.pass(detected, now);
  if (!sample) return context.withdraw(key);
  context.write(key, sample->value);
}

std::unique_ptr<SensorUnit> makeBlindZoneUnit(const Model::SensorConfig& config,
                                              const UnitContext& context) {
  if (config.memoryKeys.size() != 1) return nullptr;
  return std::make_unique<BlindZoneUnit>(config, context);
}

}  // namespace QV::robot
