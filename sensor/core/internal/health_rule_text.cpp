#include "sensor/core/internal/health_rule_text.h"

#include <sstream>

#include "platform/model/internal/number_text.h"

namespace QV::sensor {
namespace {

std::string readValue(const std::string& value, HealthRule& rule) {
  if (value == "off") return {};
  rule.value = Model::toNumber(value);
  return rule.value && *rule.value > 0.0 ? "" : "a number above 0, or off,";
}

std::string readLimit(const std::string& name, HealthRule& rule) {
  const auto found = findHealthLimit(name);
  if (!found) return "one of " + namesOfHealthLimits();
  rule.limit = *found;
  return {};
}

}  // namespace

ReadHealthRule readHealthRule(const std::string& text) {
  ReadHealthRule read{text};
  const std::size_t equals = text.rfind('=');
  if (equals == std::string::npos) {
    read.expected = "[NAME:]LIMIT=VALUE or [NAME:]LIMIT=off";
    return read;
  }
  std::string limit = text.substr(0, equals);
  const std::size_t colon = limit.rfind(':');
  if (colon != std::string::npos) {
    read.rule.name = limit.substr(0, colon);
    limit.erase(0, colon + 1);
  }
  read.expected = readLimit(limit, read.rule);
  if (read.expected.empty()) read.expected = readValue(text.substr(equals + 1), read.rule);
  return read;
}

std::vector<ReadHealthRule> readDescribedLimits(const std::string& property) {
  std::vector<ReadHealthRule> limits;
  std::istringstream texts(property);
  for (std::string text; texts >> text;) {
    limits.push_back(readHealthRule(text));
    // A sensor's description can't change other sensors' limits.
    const bool isForm = text.find(':') == std::string::npos && text.find('=') != std::string::npos;
    if (!isForm) limits.back().expected = "LIMIT=VALUE or LIMIT=off";
  }
  return limits;
}

}  // namespace QV::sensor
