#include "platform/model/description_faults.h"

#include <map>
#include <set>
#include <string>
#include <vector>

#include "platform/model/internal/key_owners.h"
#include "platform/model/internal/nearest_word.h"
#include "platform/model/internal/property_check.h"
#include "platform/model/sensor_properties.h"

namespace QV::Model {
namespace {

using Faults = std::vector<DescriptionFault>;

std::string inQuotes(const std::string& text) {
  return '"' + text + '"';
}

std::string countOf(const KeyRule& rule) {
  if (rule.most == 0) return "none";
  std::string text = std::to_string(rule.least);
  if (rule.most != rule.least) text += " to " + std::to_string(rule.most);
  if (rule.groupSize > 1) text += " in groups of " + std::to_string(rule.groupSize);
  return rule.content.empty() ? text : text + " (" + rule.content + ")";
}

void checkKeyCount(const SensorConfig& config, const KeyRule& rule, Faults& faults) {
  const std::size_t count = config.memoryKeys.size();
  const bool isWhole = rule.groupSize < 2 || count % rule.groupSize == 0;
  if (count >= rule.least && count <= rule.most && isWhole) return;
  faults.push_back({config.name,
                    std::to_string(count) + (count == 1 ? " memory key" : " memory keys"),
                    countOf(rule)});
}

void checkRange(const SensorConfig& config, const SensorKind& kind, Faults& faults) {
  for (const char* const end : {"minimumDetectionDistance", "maximumDetectionDistance"})
    if (!detail::hasProperValue(config, kind, end)) return;
  const SensorProperties properties(config);
  const auto view = properties.getFieldOfView();
  if (view.minRange <= view.maxRange) return;
  faults.push_back({config.name, "minimumDetectionDistance is above maximumDetectionDistance",
                    "at most " + properties.getText("maximumDetectionDistance")});
}

// A name that is a family's, too, means the family to whoever subscribes.
void checkName(const SensorConfig& config, const SensorKind& kind,
               const std::set<std::string>& families, Faults& faults) {
  if (kind.standsForAll || config.name == kind.family || !families.contains(config.name)) return;
  faults.push_back({config.name, "its name is that of a family of the robot", "a name of its own"});
}

// Bumpers become one sensor together; of others that stand for all, only the first is kept.
void checkFirst(const SensorConfig& config, const SensorKind& kind,
                std::map<std::string, std::string>& firsts, Faults& faults) {
  if (!kind.standsForAll || kind.points == PointMeaning::touch) return;
  const auto [first, isFirst] = firsts.emplace(kind.name, config.name);
  if (isFirst) return;
  faults.push_back({config.name, "a second sensor of type " + inQuotes(kind.name) + " is left out",
                    inQuotes(first->second) + " alone"});
}

std::set<std::string> familiesOf(const Robot& robot, const SensorKinds& kinds) {
  std::set<std::string> families;
  for (const auto& [name, config] : robot.sensorConfigs) {
    if (const SensorKind* kind = kinds.findType(config.type)) families.insert(kind->family);
  }
  return families;
}

std::string anyTypeOf(const SensorKinds& kinds) {
  std::string text;
  for (const SensorKind& kind : kinds.getAll()) {
    text += (text.empty() ? "one of " : ", ") + inQuotes(kind.name) + " (" +
            std::to_string(kind.type) + ")";
  }
  return text.empty() ? "no sensor" : text;
}

void checkForeign(const Robot& robot, const SensorKinds& kinds, Faults& faults) {
  std::vector<std::string> names;
  std::map<std::string, std::string> families;
  for (const SensorKind& kind : kinds.getAll()) {
    names.push_back(kind.name);
    families.emplace(kind.family, kind.name);
  }
  for (const ForeignSensor& sensor : robot.foreignSensors) {
    const auto family = families.find(sensor.type);
    const std::string* nearest =
        family == families.end() ? detail::findNearest(sensor.type, names) : &family->second;
    if (!nearest && !sensor.hasOurParts) continue;
    faults.push_back({sensor.name,
                      sensor.type.empty() ? "type is missing" : "type is " + inQuotes(sensor.type),
                      nearest ? inQuotes(*nearest) : anyTypeOf(kinds)});
  }
}

}  // namespace

std::string DescriptionFault::toText() const {
  const std::string who = sensor.empty() ? "a sensor without a name" : sensor;
  return who + ": " + what + ", " + expected + " expected";
}

std::vector<DescriptionFault> findDescriptionFaults(const Robot& robot, const SensorKinds& kinds) {
  Faults faults;
  detail::KeyOwners owners;
  const std::set<std::string> families = familiesOf(robot, kinds);
  std::map<std::string, std::string> firsts;
  for (const auto& [name, config] : robot.sensorConfigs) {
    const SensorKind* kind = kinds.findType(config.type);
    if (!kind) {
      faults.push_back({name, "type is " + std::to_string(config.type), anyTypeOf(kinds)});
      continue;
    }
    checkName(config, *kind, families, faults);
    checkFirst(config, *kind, firsts, faults);
    detail::checkProperties(config, *kind, faults);
    checkRange(config, *kind, faults);
    checkKeyCount(config, kind->keys, faults);
    owners.check(config, *kind, faults);
  }
  checkForeign(robot, kinds, faults);
  return faults;
}

}  // namespace QV::Model
