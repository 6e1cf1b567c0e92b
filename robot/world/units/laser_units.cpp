#include "robot/world/units/laser_units.h"

#include <stdexcept>
#include <utility>

#include "robot/services/sensor_types.h"

namespace QV::robot {
namespace {

// A mode that two actuators command would show what the one wants, or the other.
void checkActuator(const std::string& name, const LaserUnit& laser, const LaserUnit& first) {
  if (laser.getActuator() == first.getActuator()) return;
  throw std::invalid_argument("laser \"" + name + "\": setOperationMode \"" + first.getActuator() +
                              "\" expected, as for the laser that shares its getOperationMode, \"" +
                              laser.getActuator() + "\" given");
}

}  // namespace

LaserUnits::LaserUnits(const Model::Robot& robot, const UnitContext& context) : context(context) {
  for (const auto& [name, config] : robot.sensorConfigs) {
    if (!isLaserType(config.type) || !LaserUnit::isComplete(config)) continue;
    const auto laser = boost::make_shared<LaserUnit>(config, context);
    auto& lasers = groups[laser->getModeKey()].lasers;
    lasers.push_back(laser);
    checkActuator(name, *laser, *lasers[0]);
  }
}

void LaserUnits::connect(const boost::shared_ptr<QVBroker>& broker,
                         const boost::shared_ptr<DeviceManager>& devices) {
  for (auto& [modeKey, group] : groups) {
    // A laser confirms its mode when its first scan is there.
    const auto scanAll = [lasers = group.lasers](int mode) {
      for (const auto& laser : lasers) laser->scan(mode, ko::Clock::now());
    };
    group.actuator =
        std::make_unique<LaserModeActuator>(broker, devices, group.lasers[0]->getActuator(),
                                            modeKey, context.options.laserStart, scanAll);
  }
}

void LaserUnits::update(ko::Clock::time_point now) {
  for (auto& [modeKey, group] : groups) {
    int bits = 0;
    for (const auto& laser : group.lasers) bits |= laser->isOff(now) ? laser->getModeBits() : 0;
    if (std::exchange(group.deadBits, bits) != bits) group.actuator->setDeadBits(bits);
  }
}

void LaserUnits::scan(ko::Clock::time_point now) {
  for (const auto& [modeKey, group] : groups) {
    const int mode = context.memory->getData(modeKey).toInt32();
    for (const auto& laser : group.lasers) laser->scan(mode, now);
  }
}

}  // namespace QV::robot
