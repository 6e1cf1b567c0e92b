#include "session/internal/description_gaps.h"

#include <exception>

#include "platform/middleware/qv_error.h"
#include "platform/middleware/qv_memory_proxy.h"
#include "platform/model/sensor_properties.h"
#include "sensor/core/internal/health_rule_text.h"
#include "session/internal/session_parts.h"
#include "session/sensor_check.h"

namespace QV::session {
namespace {

std::vector<std::string> keysOf(const Model::SensorConfig& config,
                                const Model::SensorKinds& kinds) {
  const Model::SensorKind* kind = kinds.findType(config.type);
  if (!kind) return {};
  std::vector<std::string> keys = config.memoryKeys;
  const Model::SensorProperties properties(config);
  for (const Model::PropertyRule& rule : kind->properties) {
    if (rule.quantity == Model::Quantity::memoryKey && properties.has(rule.name))
      keys.push_back(properties.getText(rule.name));
  }
  return keys;
}

bool isBuilt(const sensor::SensorManager& manager, const std::string& name,
             const Model::SensorKind& kind) {
  const auto sensor = manager.getSensorPtr(name);
  return sensor && sensor->getFamilyName() == kind.family;
}

std::vector<std::string> findUnwritten(const QVMemoryProxy& memory,
                                       const std::vector<std::string>& keys) {
  std::vector<std::string> unwritten;
  for (const std::string& key : keys) {
    try {
      memory.getData(key);
    } catch (const QVError&) {
      unwritten.push_back(key);
    }
  }
  return unwritten;
}

std::string textOf(const std::vector<std::string>& unwritten) {
  const std::string first = "\"" + unwritten.front() + "\"";
  if (unwritten.size() == 1) return "nobody writes memory key " + first;
  return std::string("nobody writes ") + std::to_string(unwritten.size()) +
         " memory keys, the first is " + first;
}

void checkLimits(const Model::SensorConfig& config, std::vector<Model::DescriptionFault>& faults) {
  const std::string limits = Model::SensorProperties(config).getText("limits");
  for (const auto& limit : sensor::readDescribedLimits(limits)) {
    if (limit.expected.empty()) continue;
    faults.push_back(
        {config.name, "property \"limits\" says \"" + limit.text + "\"", limit.expected});
  }
}

}  // namespace

std::map<std::string, std::string> findUnbuiltSensors(SessionRobot& robot) {
  std::map<std::string, std::string> unbuilt;
  const Model::Robot* description = robot.getDescription();
  if (!description) return unbuilt;
  const auto& manager = robot.getManager();
  for (const auto& [name, config] : description->sensorConfigs) {
    const Model::SensorKind* kind = robot.getKinds().findType(config.type);
    if (!kind || isBuilt(manager, name, *kind)) continue;
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

std::vector<Model::DescriptionFault> findSlips(const Model::Robot& robot,
                                               const Model::SensorKinds& kinds) {
  auto faults = Model::findDescriptionFaults(robot, kinds);
  for (const auto& [name, config] : robot.sensorConfigs) {
    if (kinds.findType(config.type)) checkLimits(config, faults);
  }
  return faults;
}

std::vector<Model::DescriptionFault> findDescriptionFaults(
    const boost::shared_ptr<QVBroker>& broker, const Model::Robot& robot,
    const Model::SensorKinds& kinds) {
  auto faults = findSlips(robot, kinds);
  const QVMemoryProxy memory(broker);
  for (const auto& [name, config] : robot.sensorConfigs) {
    const auto unwritten = findUnwritten(memory, keysOf(config, kinds));
    if (!unwritten.empty()) faults.push_back({name, textOf(unwritten), "a driver"});
  }
  return faults;
}

std::vector<Model::DescriptionFault> findDescriptionFaults(Session& session) {
  SessionRobot& robot = robotOf(session);
  const Model::Robot* description = robot.getDescription();
  if (!description) return {};
  return findDescriptionFaults(robot.getBroker(), *description, robot.getKinds());
}

}  // namespace QV::session
