#include "sensor/real/sensor_family.h"

namespace QV::sensor {

std::string familyOfType(int type) {
  switch (type) {
    case 2:
      return "Touch";
    case 4:
      return "Asus";
    case 8:
      return "Laser";
    case 9:
      return "Sonar";
    case 14:
      return "BlindZone";
    case 16:
      return "HoleLaser";
    case 17:
      return "Shovel";
    default:
      return "";
  }
}

}  // namespace QV::sensor
