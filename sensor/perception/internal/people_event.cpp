#include "sensor/perception/internal/people_event.h"

#include <cmath>
#include <stdexcept>

#include "platform/middleware/internal/value_utils.h"

namespace QV::sensor {
namespace {

constexpr char kWrongFormat[] = "Wrong peopleEvent format";
constexpr char kWrongTimestamp[] = "Wrong peopleEvent timestamp format";

void check(bool condition, const char* error) {
  if (!condition) throw std::invalid_argument(error);
}

ko::Clock::time_point extractTimestamp(const QVValue& value, const std::string& sensorName) {
  check(value.isArray() && value.getSize() == 2 && value[0].isInt() && value[1].isInt(),
        kWrongTimestamp);
  try {
    return ValueUtils::extractDuration(value[0], value[1], sensorName);
  } catch (const std::exception&) {
    throw std::invalid_argument(kWrongTimestamp);
  }
}

float extractNumber(const QVValue& value) {
  check(value.isFloat() || value.isInt(), kWrongFormat);
  return value.toFloat();
}

PeopleEvent::Person extractPerson(const QVValue& value) {
  check(value.isArray() && value.getSize() >= 4, kWrongFormat);
  return {extractNumber(value[1]), extractNumber(value[2]), extractNumber(value[3])};
}

bool isFinite(const PeopleEvent::Person& person) {
  return std::isfinite(person.distance) && std::isfinite(person.angleY) &&
         std::isfinite(person.angleZ);
}

}  // namespace

PeopleEvent extractPeopleEvent(const QVValue& event, const std::string& sensorName) {
  check(event.isArray() && event.getSize() == 5, kWrongFormat);
  PeopleEvent result;
  result.timestamp = extractTimestamp(event[0], sensorName);
  check(event[1].isArray() && event[4].isInt(), kWrongFormat);
  result.people.reserve(event[1].getSize());
  for (const QVValue& value : event[1].toArray()) {
    const PeopleEvent::Person person = extractPerson(value);
    if (isFinite(person)) result.people.push_back(person);
  }
  result.camera = event[4].toInt32();
  return result;
}

}  // namespace QV::sensor
