#include "platform/model/internal/sensor_reader.h"

#include <cctype>
#include <iterator>
#include <stdexcept>
#include <utility>

#include <tinyxml2.h>

#include "platform/model/internal/key_pattern.h"
#include "platform/model/internal/number_text.h"

namespace QV::Model::detail {
namespace {

std::string keyIn(const XMLElement& element) {
  const char* const blanks = " \t\r\n";
  const std::string text = element.GetText() ? element.GetText() : "";
  const std::size_t begin = text.find_first_not_of(blanks);
  if (begin == std::string::npos) fail(element, "a memory key as its text expected");
  return text.substr(begin, text.find_last_not_of(blanks) + 1 - begin);
}

bool hasOurParts(const XMLElement& sensor) {
  return sensor.FirstChildElement("property") || sensor.FirstChildElement("memory_key") ||
         sensor.FirstChildElement("memory_keys");
}

}  // namespace

void SensorReader::read(const XMLElement& root) {
  for (const XMLElement* sensor : childrenOf(root, "sensor")) {
    if (xIsOurs(*sensor)) {
      xReadSensor(*sensor);
    } else if (optionalText(*sensor, "type") || hasOurParts(*sensor)) {
      robot.foreignSensors.push_back({optionalText(*sensor, "name").value_or(""),
                                      optionalText(*sensor, "type").value_or(""),
                                      hasOurParts(*sensor)});
    }
  }
}

// Other tools' sensors have no type, or a word of their own.
bool SensorReader::xIsOurs(const XMLElement& sensor) const {
  const auto type = optionalText(sensor, "type");
  if (!type) return false;
  const bool isWord = !type->empty() && std::isalpha(static_cast<unsigned char>(type->front()));
  return !isWord || kinds.findName(*type);
}

int SensorReader::xReadType(const XMLElement& sensor) const {
  const std::string text = optionalText(sensor, "type").value_or("");
  if (const SensorKind* kind = kinds.findName(text)) return kind->type;
  const std::optional<int> number = toInteger(text);
  if (!number) {
    fail(sensor, "attribute type: an integer or the name of a kind expected, " + withQuotes(text) +
                     " given");
  }
  return *number;
}

void SensorReader::xReadSensor(const XMLElement& element) {
  checkCount(element, robot.sensorConfigs.size());
  SensorConfig config;
  config.name = requiredText(element, "name");
  config.type = xReadType(element);
  const XMLElement* parent = optionalChild(element, "parent");
  config.parentLink = parent ? requiredLink(*parent, links) : robot.bodyLink;
  config.origin = originOf(element);
  for (auto* child = element.FirstChildElement(); child; child = child->NextSiblingElement()) {
    xReadPart(*child, config);
  }
  const std::string name = config.name;
  if (!robot.sensorConfigs.emplace(name, std::move(config)).second) {
    fail(element, "a name of its own expected, another sensor is called " + withQuotes(name));
  }
}

void SensorReader::xReadPart(const XMLElement& element, SensorConfig& config) {
  const std::string kind = element.Name();
  if (kind == "property") {
    xReadProperty(element, config);
  } else if (kind == "memory_key") {
    config.memoryKeys.push_back(keyIn(element));
  } else if (kind == "memory_keys") {
    xReadKeys(element, config);
  } else if (kind != "parent" && kind != "origin") {
    fail(element,
         "<property>, <memory_key>, <memory_keys>, <parent> or <origin> expected in <sensor>");
  }
}

void SensorReader::xReadProperty(const XMLElement& element, SensorConfig& config) const {
  const std::string key = requiredText(element, "key");
  const auto value = optionalText(element, "value");
  if (!value) fail(element, "an attribute value expected, it has none");
  if (!config.properties.emplace(key, *value).second) {
    fail(element, "a key of its own expected, " + withQuotes(key) + " is there twice");
  }
}

void SensorReader::xReadKeys(const XMLElement& element, SensorConfig& config) {
  const std::string pattern = requiredText(element, "pattern");
  std::optional<int> count;
  if (optionalText(element, "count")) count = requiredInteger(element, "count");
  std::vector<std::string> keys;
  try {
    keys = expandKeyPattern(pattern, count, keysLeft);
  } catch (const std::invalid_argument& problem) {
    fail(element, problem.what());
  }
  keysLeft -= keys.size();
  std::move(keys.begin(), keys.end(), std::back_inserter(config.memoryKeys));
}

}  // namespace QV::Model::detail
