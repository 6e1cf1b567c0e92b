#include "robot/logs/internal/sonar_source.h"

#include <algorithm>
#include <map>
#include <memory>
#include <stdexcept>

#include "platform/model/sensor_properties.h"
#include "robot/services/internal/sonar_config.h"

namespace QV::robot {
namespace {

struct Played {
  std::size_t index;
  float maxRange;
};

// Returns the place of each sonar's value in a step.
std::map<std::string, Played> sonarsOf(const Recording& recording) {
  std::map<std::string, Played> sonars;
  std::size_t index = 0;
  for (const Model::SensorConfig& sensor : recording.sensors) {
    if (isSonar(sensor)) {
      const Model::SensorProperties properties(sensor);
      sonars[sensor.name] = {index, properties.getNumber("maximumDetectionDistance")};
    }
    index += sensor.memoryKeys.size();
  }
  return sonars;
}

}  // namespace

SonarDriver::Source makeSonarSource(const Recording& recording, ko::Clock::time_point start) {
  const auto steps = std::make_shared<const std::vector<RecordedStep>>(recording.steps);
  return [steps, start,
          sonars = sonarsOf(recording)](const std::string& name) -> std::optional<float> {
    const auto sonar = sonars.find(name);
    if (sonar == sonars.end())
      throw std::invalid_argument("no sonar " + name + " in the recording");
    const ko::Duration elapsed = ko::Clock::now() - start;
    const auto next = std::upper_bound(
        steps->begin(), steps->end(), elapsed,
        [](ko::Duration time, const RecordedStep& step) { return time < step.time; });
    if (next == steps->begin()) return std::nullopt;
    const float range = std::prev(next)->values.at(sonar->second.index);
    return range < sonar->second.maxRange ? std::optional<float>(range) : std::nullopt;
  };
}

}  // namespace QV::robot
