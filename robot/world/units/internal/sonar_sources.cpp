#include "robot/world/units/internal/sonar_sources.h"

#include <array>
#include <cmath>
#include <limits>
#include <stdexcept>

#include <boost/make_shared.hpp>

#include "platform/model/sensor_properties.h"
#include "robot/services/internal/sonar_config.h"
#include "robot/services/internal/sonar_driver.h"
#include "robot/world/chance/range_noise.h"
#include "robot/world/faults/fault_channel.h"
#include "robot/world/units/internal/garbage.h"
#include "robot/world/units/internal/range_fan.h"
#include "robot/world/units/internal/unit_parts.h"

namespace QV::robot {
namespace {

// The spacing finds a chair's leg at the end of the cone.
constexpr float kRaySpacing = 0.03f;
constexpr std::array<float, 4> kFalseEchoes{std::numeric_limits<float>::quiet_NaN(), -1.0f, 0.0f,
                                            1e30f};

std::size_t rayCountOf(const Model::SensorConfig& config) {
  const float aperture = Model::SensorProperties(config).getAngle("horizontalAngularRange");
  return static_cast<std::size_t>(aperture / kRaySpacing) + 1;
}

}  // namespace

class SonarSources::Sonar {
 public:
  Sonar(const Model::SensorConfig& config, const UnitContext& context)
      : key(config.memoryKeys[0]),
        fan(config, rayCountOf(config), context),
        noise(context.getOptions(), config.name),
        garbage(context, config.name),
        channel(
            context.getFaults(config.name), [this](float) { return garbage.pick(kFalseEchoes); },
            [](float range) { return kFalseShare * range; }) {}

  const std::string& getKey() const { return key; }
  float getNoEcho() const { return fan.getMaxRange() + SonarDriver::kNoEchoMargin; }

  /** Returns the range; infinity for no echo, std::nullopt if the sonar does not answer. */
  std::optional<float> measure() {
    const auto sample = channel.pass(noise.apply(fan.measureNearest()), ko::Clock::now());
    return sample ? std::optional<float>(sample->value) : std::nullopt;
  }

 private:
  const std::string key;
  const RangeFan fan;
  RangeNoise noise;
  Garbage garbage;
  FaultChannel<float> channel;
};

SonarSources::SonarSources(const std::vector<Model::SensorConfig>& configs,
                           const UnitContext& context)
    : context(context) {
  for (const Model::SensorConfig& config : configs) {
    if (!isSonar(config)) continue;
    const auto& sonar = sonars[config.name] = std::make_unique<Sonar>(config, context);
    context.write(sonar->getKey(), sonar->getNoEcho());
  }
}

SonarSources::~SonarSources() = default;

std::optional<float> SonarSources::measure(const std::string& name) {
  std::lock_guard<std::mutex> lock(mutex);
  Sonar& sonar = *sonars.at(name);
  const auto range = sonar.measure();
  if (!range) {
    context.withdraw(sonar.getKey());
    throw std::runtime_error("the sonar does not answer");
  }
  return std::isinf(*range) ? std::nullopt : range;
}

UnitFactory::Units plugInSonars(const std::vector<Model::SensorConfig>& configs,
                                const UnitContext& context) {
  const auto sources = boost::make_shared<SonarSources>(configs, context);
  UnitParts::servicesOf(context).sonars->setSource(
      [sources](const std::string& sonar) { return sources->measure(sonar); });
  return {};
}

}  // namespace QV::robot
