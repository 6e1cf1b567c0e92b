#include "robot/world/units/blind_zone_unit.h"

#include <array>
#include <cmath>
#include <limits>

#include "robot/world/internal/generator.h"

namespace QV::robot {
namespace {

constexpr std::size_t kRayCount = 15;

float anyNonsenseFlag(std::mt19937& generator) {
  constexpr std::array<float, 4> kNonsense{std::numeric_limits<float>::quiet_NaN(), -1.0f, 0.5f,
                                           1e30f};
  return kNonsense[generator() % kNonsense.size()];
}

}  // namespace

BlindZoneUnit::BlindZoneUnit(const Model::SensorConfig& config, const UnitContext& context)
    : key(config.memoryKeys.at(0)),
      context(context),
      fan(config, kRayCount, context.surroundings),
      nonsense(makeGenerator(context.options.seed, config.name + " garbage")),
      channel(
          context.faults, config.name, [this](float) { return anyNonsenseFlag(nonsense); },
          [](float detected) { return 1.0f - detected; }) {}

void BlindZoneUnit::measure(ko::Clock::time_point now) {
  const float detected = std::isinf(fan.measureNearest()) ? 0.0f : 1.0f;
  const auto sample = channel.pass(detected, now);
  if (!sample) return context.withdraw(key);
  context.memory->insertData(key, sample->value);
}

}  // namespace QV::robot
