#pragma once

#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "platform/model/sensor_config.h"
#include "robot/world/units/unit_factory.h"

namespace QV::robot {

/**
 * The sonars of a robot, as the sonar driver asks for them; and the key of one that does not answer
 * holds no number. Thread-safe.
 */
class SonarSources {
 public:
  /** Writes the keys of sonars that hear nothing. */
  SonarSources(const std::vector<Model::SensorConfig>& configs, const UnitContext& context);
  ~SonarSources();

  /** A SonarDriver::Source. */
  std::optional<float> measure(const std::string& sonar);

 private:
  class Sonar;

  const UnitContext context;
  std::mutex mutex;
  std::map<std::string, std::unique_ptr<Sonar>> sonars;
};

/** The sonar driver says when they measure: there are no units. */
UnitFactory::Units plugInSonars(const std::vector<Model::SensorConfig>& configs,
                                const UnitContext& context);

}  // namespace QV::robot
