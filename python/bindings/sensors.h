#pragma once

#include <pybind11/pybind11.h>
#include <string>
#include <vector>

#include "sensor/core/sensor.h"

namespace QV::python {

/** A sensor whose operations are written in Python. */
class PythonSensor : public sensor::Sensor {
 public:
  PythonSensor(const std::string& name, const std::string& family,
               const Math::SensorFieldOfView2D& view);

  const Math::SensorFieldOfView2D& getFieldOfView() const { return fieldOfView; }

 protected:
  std::vector<Math::MetricalData> xGetData() const override;
  bool xSubscribeToHardware() override;
  bool xUnsubscribeFromHardware() override;

 private:
  template <typename Result>
  Result xCall(const char* method, Result (*convert)(pybind11::handle)) const;
  bool xHardware(const char* method);
};

}  // namespace QV::python
