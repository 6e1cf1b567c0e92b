#include "robot/world/units/unit_factory.h"

#include <iterator>
#include <stdexcept>
#include <string>
#include <utility>

namespace QV::robot {
namespace {

[[noreturn]] void refuse(int type, const char* expected) {
  throw std::invalid_argument("UnitFactory: " + std::string(expected) + " expected for type " +
                              std::to_string(type));
}

}  // namespace

void UnitFactory::add(int type, Creator creator) {
  if (!creator) refuse(type, "a creator");
  addTogether({type}, [create = std::move(creator)](const auto& configs, const auto& context) {
    Units units;
    for (const Model::SensorConfig& config : configs) {
      if (auto unit = create(config, context)) units.push_back(std::move(unit));
    }
    return units;
  });
}

void UnitFactory::addTogether(const std::vector<int>& types, GroupCreator creator) {
  for (const int type : types) {
    if (!creator) refuse(type, "a creator");
    if (hasType(type)) refuse(type, "one creator");
  }
  for (const int type : types) groupOfType[type] = groups.size();
  groups.push_back(std::move(creator));
}

UnitFactory::Units UnitFactory::make(const Model::Robot& robot, const UnitContext& context) const {
  std::vector<std::vector<Model::SensorConfig>> configs(groups.size());
  for (const auto& [name, config] : robot.sensorConfigs) {
    const auto group = groupOfType.find(config.type);
    if (group != groupOfType.end()) configs[group->second].push_back(config);
  }
  Units units;
  for (std::size_t i = 0; i < groups.size(); ++i) {
    Units made = groups[i](configs[i], context);
    std::move(made.begin(), made.end(), std::back_inserter(units));
  }
  return units;
}

}  // namespace QV::robot
