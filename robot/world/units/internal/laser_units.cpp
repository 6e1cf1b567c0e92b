#include "robot/world/units/internal/laser_units.h"

#include <algorithm>
#include <utility>

#include <boost/make_shared.hpp>

#include "platform/model/sensor_kinds.h"
#include "platform/model/sensor_properties.h"
#include "robot/services/internal/mode_pairs.h"
#include "robot/world/units/internal/unit_parts.h"

namespace QV::robot {
namespace {

const Model::SensorKind& kindOf(const Model::SensorConfig& config) {
  return *Model::SensorKinds::standard().findType(config.type);
}

bool isHoleLaser(const Model::SensorConfig& config) {
  return kindOf(config).points == Model::PointMeaning::floor;
}

/** True if the configuration has everything that a laser of its type needs. */
bool isComplete(const Model::SensorConfig& config) {
  const Model::SensorProperties properties(config);
  return std::ranges::all_of(kindOf(config).properties, [&](const Model::PropertyRule& rule) {
    return !rule.isNeededToMake || !properties.getText(rule.name).empty();
  });
}

}  // namespace

LaserUnits::LaserUnits(const std::vector<Model::SensorConfig>& configs, const UnitContext& context)
    : SensorUnit("lasers", ko::Duration::zero()),
      context(context),
      scanBeat(context.getOptions().laserPeriod) {
  ModePairs modes;
  for (const Model::SensorConfig& config : configs) {
    if (!isComplete(config)) continue;
    const auto laser = boost::make_shared<LaserUnit>(config, isHoleLaser(config), context);
    modes.add(config.name, laser->getActuator(), laser->getModeKey());
    groups[laser->getModeKey()].lasers.push_back(laser);
  }
  xConnect();
}

void LaserUnits::xConnect() {
  const UnitServices& services = UnitParts::servicesOf(context);
  for (auto& [modeKey, group] : groups) {
    // A laser confirms its mode when its first scan is there.
    const auto scanAll = [lasers = group.lasers](int mode) {
      for (const auto& laser : lasers) laser->scan(mode, ko::Clock::now());
    };
    group.actuator = std::make_unique<LaserModeActuator>(services.broker, services.devices,
                                                         group.lasers[0]->getActuator(), modeKey,
                                                         context.getOptions().laserStart, scanAll);
  }
}

void LaserUnits::measure(ko::Clock::time_point now) {
  xUpdateDeadBits(now);
  if (scanBeat.isDue(now)) xScan(now);
}

void LaserUnits::xUpdateDeadBits(ko::Clock::time_point now) {
  for (auto& [modeKey, group] : groups) {
    int bits = 0;
    for (const auto& laser : group.lasers) bits |= laser->isOff(now) ? laser->getModeBits() : 0;
    if (std::exchange(group.deadBits, bits) != bits) group.actuator->setDeadBits(bits);
  }
}

void LaserUnits::xScan(ko::Clock::time_point now) {
  for (const auto& [modeKey, group] : groups) {
    const int mode = context.read(modeKey).toInt32();
    for (const auto& laser : group.lasers) laser->scan(mode, now);
  }
}

UnitFactory::Units makeLaserUnits(const std::vector<Model::SensorConfig>& configs,
                                  const UnitContext& context) {
  UnitFactory::Units units;
  units.push_back(std::make_unique<LaserUnits>(configs, context));
  return units;
}

}  // namespace QV::robot
