#include "robot/world/units/sensor_unit.h"

namespace QV::robot {

SensorUnit::SensorUnit(const std::string& name, ko::Duration period) : name(name), period(period) {}

SensorUnit::~SensorUnit() = default;

}  // namespace QV::robot
