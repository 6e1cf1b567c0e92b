#include "robot/world/units/unit_context.h"

#include <utility>

#include "platform/middleware/qv_error.h"
#include "robot/world/chance/internal/generator.h"
#include "robot/world/units/internal/unit_parts.h"

namespace QV::robot {

UnitContext::UnitContext(boost::shared_ptr<UnitParts> parts) : parts(std::move(parts)) {}

UnitContext::~UnitContext() = default;

const WorldOptions& UnitContext::getOptions() const {
  return parts->options;
}

Surroundings& UnitContext::getSurroundings() const {
  return parts->surroundings;
}

std::mt19937 UnitContext::makeGenerator(const std::string& source) const {
  return robot::makeGenerator(parts->options.seed, source);
}

FaultFinder UnitContext::getFaults(const std::string& sensor) const {
  return [of = parts, sensor](ko::Clock::time_point time) { return of->faults.find(sensor, time); };
}

void UnitContext::addFaultName(const std::string& name) const {
  parts->faults.addSensor(name, true);
}

QVValue UnitContext::read(const std::string& key) const {
  return parts->memory->getData(key);
}

void UnitContext::write(const std::string& key, const QVValue& value) const {
  parts->memory->insertData(key, value);
}

void UnitContext::withdraw(const std::string& key) const {
  try {
    write(key, QVValue());
  } catch (const QVError&) {
    // The address that was given out must stay a number's.
  }
}

void UnitContext::declareEvent(const std::string& event) const {
  parts->memory->declareEvent(event);
}

void UnitContext::raiseEvent(const std::string& event, const QVValue& value) const {
  parts->memory->raiseEvent(event, value);
}

bool UnitContext::hasSubscribers(const std::string& event) const {
  return parts->memory->hasSubscribers(event);
}

}  // namespace QV::robot
