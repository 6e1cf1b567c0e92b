#include "platform/model/internal/property_check.h"

#include <optional>
#include <set>

#include "platform/model/internal/nearest_word.h"
#include "platform/model/internal/number_text.h"

namespace QV::Model::detail {
namespace {

std::string propertyCalled(const std::string& name) {
  return "property \"" + name + "\" is ";
}

std::string withoutBlanks(const std::string& text) {
  const char* const blanks = " \t\r\n";
  const std::size_t begin = text.find_first_not_of(blanks);
  if (begin == std::string::npos) return {};
  return text.substr(begin, text.find_last_not_of(blanks) + 1 - begin);
}

/** Returns the expectation for a wrong text; std::nullopt for a good one. */
std::optional<std::string> findExpected(const PropertyRule& rule, const std::string& text) {
  if (!isNumber(rule.quantity)) {
    const bool isMissing = text.empty() && rule.quantity != Quantity::text;
    return isMissing ? std::optional(rule.toText()) : std::nullopt;
  }
  const std::optional<double> number = toNumber(withoutBlanks(text));
  if (!number) return std::string(nameOf(rule.quantity));
  if (rule.hasLimits() && (*number < rule.least || *number > rule.most)) return rule.toText();
  return std::nullopt;
}

std::vector<std::string> namesOf(const SensorKind& kind) {
  std::vector<std::string> names;
  names.reserve(kind.properties.size() + commonProperties().size());
  for (const PropertyRule& rule : kind.properties) names.push_back(rule.name);
  for (const PropertyRule& rule : commonProperties()) names.push_back(rule.name);
  return names;
}

std::string anyOf(const std::vector<std::string>& names) {
  std::string text;
  for (const std::string& name : names) text += (text.empty() ? "\"" : ", \"") + name + '"';
  return text;
}

}  // namespace

void checkProperties(const SensorConfig& config, const SensorKind& kind,
                     std::vector<DescriptionFault>& faults) {
  const std::vector<std::string> names = namesOf(kind);
  std::set<std::string> misspelt;
  for (const auto& [name, text] : config.properties) {
    if (const PropertyRule* rule = kind.findProperty(name)) {
      const auto expected = findExpected(*rule, text);
      if (expected)
        faults.push_back({config.name, propertyCalled(name) + '"' + text + '"', *expected});
      continue;
    }
    const std::string* nearest = findNearest(name, names);
    if (nearest) misspelt.insert(*nearest);
    faults.push_back({config.name, propertyCalled(name) + "unknown",
                      nearest ? '"' + *nearest + '"' : "one of " + anyOf(names)});
  }
  for (const PropertyRule& rule : kind.properties) {
    const bool isThere = config.properties.contains(rule.name) || misspelt.contains(rule.name);
    if (!rule.isRequired || isThere) continue;
    faults.push_back({config.name, propertyCalled(rule.name) + "missing", rule.toText()});
  }
}

bool hasProperValue(const SensorConfig& config, const SensorKind& kind, const std::string& name) {
  const PropertyRule* rule = kind.findProperty(name);
  const auto given = config.properties.find(name);
  return rule && given != config.properties.end() && !findExpected(*rule, given->second);
}

}  // namespace QV::Model::detail
