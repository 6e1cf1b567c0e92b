#include "sensor/perception/internal/touch_event.h"

#include <algorithm>

namespace QV::Touch {
namespace {

bool extractTypes(const QVValue& value, std::set<TOUCH_DETECTION_TYPE>& types) {
  if (!value.isArray()) return false;
  return std::all_of(value.toArray().begin(), value.toArray().end(), [&](const QVValue& type) {
    if (!type.isInt()) return false;
    types.insert(static_cast<TOUCH_DETECTION_TYPE>(type.toInt32()));
    return true;
  });
}

bool extractGroup(const QVValue& entry, TouchGroupEvent& group) {
  if (!entry.isArray() || entry.getSize() < 2) return false;
  if (!entry[0].isString() || !entry[1].isBool()) return false;
  group.groupName = entry[0].toString();
  group.touched = entry[1].toBool();
  if (!group.touched) return true;
  return entry.getSize() >= 3 && extractTypes(entry[2], group.types);
}

}  // namespace

std::string getTypeName(TOUCH_DETECTION_TYPE type) {
  switch (type) {
    case TACTILE:
      return "Tactile";
    case BUMPER:
      return "Bumper";
    case JOINT:
      return "Joint";
    case ACTUATOR:
      return "Actuator";
    case WHEEL:
      return "Wheel";
    case EFFECTOR:
      return "Effector";
    default:
      return "Unknown";
  }
}

bool isValidTouchDetectionType(int value) {
  return value >= UNKNOWN && value <= EFFECTOR;
}

bool extractTouchEventInfo(const QVValue& event, std::vector<TouchGroupEvent>& out) {
  out.clear();
  if (!event.isArray()) return false;
  out.reserve(event.getSize());
  for (const QVValue& entry : event.toArray()) {
    if (!extractGroup(entry, out.emplace_back())) {
      out.clear();
      return false;
    }
  }
  return true;
}

}  // namespace QV::Touch
