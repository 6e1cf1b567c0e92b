#include "platform/model/internal/key_owners.h"

#include "platform/model/sensor_properties.h"

namespace QV::Model::detail {
namespace {

std::string textOf(const std::vector<std::string>& keys, const std::string& sensor,
                   const std::string& owner) {
  const bool isOne = keys.size() == 1;
  const std::string what =
      isOne ? "memory key \"" + keys[0] + "\" is"
            : std::to_string(keys.size()) + " memory keys, \"" + keys[0] + "\" the first, are";
  if (owner == sensor) return what + " there twice";
  return what + (isOne ? " that of " : " those of ") + owner + " too";
}

}  // namespace

void KeyOwners::check(const SensorConfig& config, const SensorKind& kind,
                      std::vector<DescriptionFault>& faults) {
  Clashes clashes;
  const SensorProperties properties(config);
  for (const std::string& key : config.memoryKeys) xTake(key, {config.name, false}, clashes);
  for (const PropertyRule& rule : kind.properties) {
    if (rule.quantity == Quantity::memoryKey)
      xTake(properties.getText(rule.name), {config.name, rule.isShared}, clashes);
  }
  for (const auto& [owner, keys] : clashes) {
    faults.push_back({config.name, textOf(keys, config.name, owner), "keys of its own"});
  }
}

void KeyOwners::xTake(const std::string& key, const Owner& owner, Clashes& clashes) {
  if (key.empty()) return;
  const auto [place, isNew] = owners.emplace(key, owner);
  if (isNew || (owner.isShared && place->second.isShared)) return;
  clashes[place->second.sensor].push_back(key);
}

}  // namespace QV::Model::detail
