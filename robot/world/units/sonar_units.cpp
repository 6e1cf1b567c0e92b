#include "robot/world/units/sonar_units.h"

#include <array>
#include <cmath>
#include <limits>
#include <stdexcept>

#include "robot/services/sensor_types.h"
#include "robot/services/sonar_driver.h"
#include "robot/world/faults/fault_channel.h"
#include "robot/world/internal/generator.h"
#include "robot/world/units/range_fan.h"
#include "robot/world/units/range_noise.h"
#include "robot/world/units/sensor_properties.h"

namespace QV::robot {
namespace {

constexpr float kFalseSonarShare = 0.6f;
// So close that a chair's leg at the end of the cone is not missed.
constexpr float kRaySpacing = 0.03f;

std::size_t rayCountOf(const Model::SensorConfig& config) {
  return static_cast<std::size_t>(angleOf(config, "horizontalAngularRange") / kRaySpacing) + 1;
}

}  // namespace

class SonarUnits::Unit {
 public:
  Unit(const Model::SensorConfig& config, const UnitContext& context)
      : key(config.memoryKeys[0]),
        fan(config, rayCountOf(config), context.surroundings),
        noise(context.options, config.name),
        nonsense(makeGenerator(context.options.seed, config.name + " garbage")),
        channel(
            context.faults, config.name, [this](float) { return xGarble(); },
            [](float range) { return kFalseSonarShare * range; }) {}

  const std::string& getKey() const { return key; }
  float getNoEcho() const { return fan.getMaxRange() + SonarDriver::kNoEchoMargin; }

  /** Infinity for no echo; nothing when it does not answer. */
  std::optional<float> measure() {
    const auto sample = channel.pass(noise.apply(fan.measureNearest()), ko::Clock::now());
    return sample ? std::optional<float>(sample->value) : std::nullopt;
  }

 private:
  float xGarble() {
    constexpr std::array<float, 4> kNonsense{std::numeric_limits<float>::quiet_NaN(), -1.0f, 0.0f,
                                             1e30f};
    return kNonsense[nonsense() % kNonsense.size()];
  }

  const std::string key;
  const RangeFan fan;
  RangeNoise noise;
  std::mt19937 nonsense;
  FaultChannel<float> channel;
};

SonarUnits::SonarUnits(const Model::Robot& robot, const UnitContext& context) : context(context) {
  for (const auto& [name, config] : robot.sensorConfigs) {
    if (config.type != kSonarType || config.memoryKeys.size() != 1) continue;
    const auto& unit = units[name] = std::make_unique<Unit>(config, context);
    context.memory->insertData(unit->getKey(), unit->getNoEcho());
  }
}

SonarUnits::~SonarUnits() = default;

std::optional<float> SonarUnits::measure(const std::string& sonar) {
  std::lock_guard<std::mutex> lock(mutex);
  Unit& unit = *units.at(sonar);
  const auto range = unit.measure();
  if (!range) {
    context.withdraw(unit.getKey());
    throw std::runtime_error("the sonar does not answer");
  }
  return std::isinf(*range) ? std::nullopt : range;
}

}  // namespace QV::robot
