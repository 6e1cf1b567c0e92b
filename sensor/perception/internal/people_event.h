#pragma once

#include <string>
#include <vector>

#include "platform/api.h"
#include "platform/ko/clock.h"
#include "platform/middleware/qv_value.h"

namespace QV::sensor {

/** The people that a camera saw at one moment. */
struct QV_API PeopleEvent {
  struct Person {
    /** Metres. */
    float distance = 0.0f;
    /** Radians about the camera's y and z axes. */
    float angleY = 0.0f;
    float angleZ = 0.0f;
  };

  ko::Clock::time_point timestamp;
  std::vector<Person> people;
  int camera = 0;
};

/**
 * Reads [[seconds, microseconds], [[_, distance, angleY, angleZ, ...], ...], _, _, camera]; what is
 * marked _ is not read. A person with a number that is not finite is left out. Another shape throws
 * std::invalid_argument with "Wrong peopleEvent format", or "Wrong peopleEvent timestamp format"
 * for the time.
 */
QV_API PeopleEvent extractPeopleEvent(const QVValue& event, const std::string& sensorName);

}  // namespace QV::sensor
