#pragma once

#include <cstdint>
#include <set>
#include <string>
#include <vector>

#include "platform/api.h"
#include "platform/middleware/qv_value.h"

namespace QV::Touch {

/** The types of touch detection. The interface has the capitals. */
enum TOUCH_DETECTION_TYPE : std::int32_t {
  UNKNOWN = 0,
  TACTILE = 1,
  BUMPER = 2,
  JOINT = 3,
  ACTUATOR = 4,
  WHEEL = 5,
  EFFECTOR = 6
};

/** A part of the body that is now touched, or no longer. */
struct QV_API TouchGroupEvent {
  /** The name of the group, which is also that of its frame. */
  std::string groupName;
  bool touched = false;
  /** Empty for a release. May hold numbers that are not listed above. */
  std::set<TOUCH_DETECTION_TYPE> types;

  friend bool operator==(const TouchGroupEvent&, const TouchGroupEvent&) = default;
};

/** "Tactile", "Bumper", ...; "Unknown" for every number without a name. */
QV_API std::string getTypeName(TOUCH_DETECTION_TYPE type);

/** True if the number is one of the listed types, `UNKNOWN` included. */
QV_API bool isValidTouchDetectionType(int value);

/**
 * Reads the event [[group, touched, [type, ...]], ...]; a release needs no types, further elements
 * are ignored. Any error empties `out` and returns false. Types beyond 32 bits saturate.
 */
QV_API bool extractTouchEventInfo(const QVValue& event, std::vector<TouchGroupEvent>& out);

}  // namespace QV::Touch
