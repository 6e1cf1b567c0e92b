#include "sensor/core/internal/sensor_scope.h"

#include <utility>

namespace QV::sensor {
namespace {

thread_local const std::string* current = nullptr;

}  // namespace

SensorScope::SensorScope(const std::string& name) : outer(std::exchange(current, &name)) {}

SensorScope::~SensorScope() {
  current = outer;
}

const std::string* SensorScope::getCurrent() {
  return current;
}

}  // namespace QV::sensor
