#pragma once

#include <memory>
#include <pybind11/pybind11.h>

#include "python/bindings/manager_handle.h"
#include "sensor/core/sensor_health.h"

namespace QV::python {

pybind11::object toPython(const sensor::SensorHealth& health);

void bindHealth(pybind11::class_<ManagerHandle, std::shared_ptr<ManagerHandle>>& type);

}  // namespace QV::python
