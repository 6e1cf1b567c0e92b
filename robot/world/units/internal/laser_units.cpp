#include "robot/world/units/internal/laser_units.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

#include <boost/make_shared.hpp>

#include "platform/model/sensor_kinds.h"
#include "platform/model/sensor_properties.h"
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

// A mode must have one actuator: with two it would show the value of either.
void checkActuator(const std::string& name, const LaserUnit& laser, const LaserUnit& first) {
  if (laser.getActuator() == first.getActuator()) return;
  throw std::invalid_argument("laser \"" + name + "\": setOperationMode \"" + first.getActuator() +
                              "\" expected, as for the laser that shares its getOperationMode, \"" +
                              laser.getActuator() + "\" given");
}

// With two modes an actuator would serve the last one alone, and the other's lasers never start.
void checkMode(const std::string& name, const LaserUnit& laser, const LaserUnit& first) {
  if (laser.getModeKey() == first.getModeKey()) return;
  throw std::invalid_argument("laser \"" + name + "\": getOperationMode \"" + first.getModeKey() +
                              "\" expected, as for the laser that shares its setOperationMode, \"" +
                              laser.getModeKey() + "\" given");
}

}  // namespace

LaserUnits::LaserUnits(const std::vector<Model::SensorConfig>& configs, const UnitContext& context)
    : SensorUnit("lasers", ko::Duration::zero()),
      context(context),
      scanBeat(context.getOptions().laserPeriod) {
  std::map<std::string, boost::shared_ptr<LaserUnit>> firstOf;
  for (const Model::SensorConfig& config : configs) {
    if (!isComplete(config)) continue;
    const auto laser = boost::make_shared<LaserUnit>(config, isHoleLaser(config), context);
    auto& lasers = groups[laser->getModeKey()].lasers;
    lasers.push_back(laser);
    checkActuator(config.name, *laser, *lasers[0]);
    checkMode(config.name, *laser, *firstOf.emplace(laser->getActuator(), laser).first->second);
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
