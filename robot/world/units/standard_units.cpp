#include <string>

#include "platform/model/sensor_kinds.h"
#include "robot/world/units/internal/blind_zone_unit.h"
#include "robot/world/units/internal/depth_source.h"
#include "robot/world/units/internal/laser_units.h"
#include "robot/world/units/internal/sonar_sources.h"
#include "robot/world/units/internal/touch_units.h"
#include "robot/world/units/unit_factory.h"

namespace QV::robot {
namespace {

int typeOf(const std::string& name) {
  return Model::SensorKinds::standard().findName(name)->type;
}

UnitFactory makeStandard() {
  UnitFactory factory;
  factory.addTogether({typeOf("Touch")}, makeTouchUnits);
  factory.addTogether({typeOf("Laser"), typeOf("HoleLaser"), typeOf("Shovel")}, makeLaserUnits);
  factory.addTogether({typeOf("Sonar")}, plugInSonars);
  factory.add(typeOf("BlindZone"), makeBlindZoneUnit);
  factory.addTogether({typeOf("DepthCamera")}, plugInCameras);
  return factory;
}

}  // namespace

const UnitFactory& UnitFactory::standard() {
  static const UnitFactory standard = makeStandard();
  return standard;
}

}  // namespace QV::robot
