#include "python/bindings/manager_handle.h"

#include <stdexcept>
#include <utility>

#include "python/bindings/common.h"
#include "python/bindings/in_sensor.h"

namespace QV::python {

ManagerHandle::ManagerHandle(std::shared_ptr<sensor::SensorManager> manager)
    : manager(std::move(manager)) {}

ManagerHandle::ManagerHandle(Finder find) : find(std::move(find)) {}

ManagerHandle::~ManagerHandle() {
  end();
}

std::shared_ptr<sensor::SensorManager> ManagerHandle::get() const {
  InSensor::refuse();
  if (find) return find();
  if (!manager) throw std::runtime_error("a manager that lives expected, one that has ended given");
  return manager;
}

bool ManagerHandle::isOpen() const {
  if (!find) return manager != nullptr;
  try {
    return find() != nullptr;
  } catch (const std::runtime_error&) {
    return false;
  }
}

void ManagerHandle::close() {
  if (manager) patiently([last = std::exchange(manager, nullptr)]() mutable { last.reset(); });
}

void ManagerHandle::end() {
  letGo(manager);
}

}  // namespace QV::python
