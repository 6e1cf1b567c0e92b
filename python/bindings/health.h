#pragma once

#include <pybind11/pybind11.h>

#include "sensor/core/sensor_health.h"

namespace QV::python {

pybind11::object toPython(const sensor::SensorHealth& health);

}  // namespace QV::python
