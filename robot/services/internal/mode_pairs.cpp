#include "robot/services/internal/mode_pairs.h"

#include <stdexcept>

#include "platform/model/sensor_properties.h"

namespace QV::robot {
namespace {

constexpr char kActuator[] = "setOperationMode";
constexpr char kKey[] = "getOperationMode";

void checkSame(const std::string& laser, const std::string& what, const std::string& shared,
               const std::string& first, const std::string& given) {
  if (given == first) return;
  throw std::invalid_argument("laser \"" + laser + "\": " + what + " \"" + first +
                              "\" expected, as for the laser that shares its " + shared + ", \"" +
                              given + "\" given");
}

}  // namespace

ModePairs::ModePairs(const Model::Robot& robot) {
  for (const auto& [name, config] : robot.sensorConfigs) {
    const Model::SensorProperties properties(config);
    const std::string actuator = properties.getText(kActuator);
    const std::string key = properties.getText(kKey);
    if (!actuator.empty() && !key.empty()) add(name, actuator, key);
  }
}

// A mode with two actuators would show the value of either. An actuator with two modes would serve
// the last one alone, and the other's lasers would never start.
void ModePairs::add(const std::string& laser, const std::string& actuator, const std::string& key) {
  checkSame(laser, kActuator, kKey, actuators.emplace(key, actuator).first->second, actuator);
  checkSame(laser, kKey, kActuator, keys.emplace(actuator, key).first->second, key);
}

}  // namespace QV::robot
