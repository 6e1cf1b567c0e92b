#include "session/internal/description_gaps.h"

#include <exception>

#include "platform/middleware/qv_error.h"
#include "platform/middleware/qv_memory_proxy.h"
#include "session/internal/session_parts.h"
#include "session/sensor_check.h"

namespace QV::session {
namespace {

std::vector<std::string> keysOf(const Model::SensorConfig& config,
                                const Model::SensorKinds& kinds) {
  std::vector<std::string> keys = config.memoryKeys;
  const Model::SensorKind* kind = kinds.findType(config.type);
  if (!kind) return keys;
  for (const Model::PropertyRule& rule : kind->properties) {
    const auto property = config.properties.find(rule.name);
    if (rule.quantity != Model::Quantity::memoryKey || property == config.properties.end())
      continue;
    keys.push_back(property->second);
  }
  return keys;
}

}  // namespace

std::map<std::string, std::string> findUnbuiltSensors(SessionRobot& robot) {
  std::map<std::string, std::string> unbuilt;
  const Model::Robot* description = robot.getDescription();
  if (!description) return unbuilt;
  const auto& manager = robot.getManager();
  for (const auto& [name, config] : description->sensorConfigs) {
    const Model::SensorKind* kind = robot.getKinds().findType(config.type);
    if (!kind || manager.isSensor(name)) continue;
    if (kind->standsForAll && manager.isFamily(kind->family)) continue;
    unbuilt[name] = kind->family;
  }
  return unbuilt;
}

std::string findMissingInput(SessionRobot& robot, const std::string& sensor) {
  const Model::Robot* description = robot.getDescription();
  if (!description || !robot.getBroker()) return {};
  const auto config = description->sensorConfigs.find(sensor);
  if (config == description->sensorConfigs.end()) return {};
  const QVMemoryProxy memory(robot.getBroker());
  for (const std::string& key : config->second.memoryKeys) {
    try {
      memory.getData(key).toFloat();
    } catch (const std::exception& exception) {
      return "memory key " + key + ": " + exception.what();
    }
  }
  return {};
}

std::vector<Model::DescriptionFault> findDescriptionFaults(Session& session) {
  SessionRobot& robot = robotOf(session);
  const Model::Robot* description = robot.getDescription();
  if (!description) return {};
  auto faults = Model::findDescriptionFaults(*description, robot.getKinds());
  const QVMemoryProxy memory(robot.getBroker());
  for (const auto& [name, config] : description->sensorConfigs) {
    for (const std::string& key : keysOf(config, robot.getKinds())) {
      try {
        memory.getData(key);
      } catch (const QVError&) {
        faults.push_back({name, "memory key \"" + key + "\" is written by nobody", "a driver"});
      }
    }
  }
  return faults;
}

}  // namespace QV::session
