#include "python/bindings/sensors.h"

#include "python/bindings/common.h"
#include "python/bindings/in_sensor.h"
#include "python/bindings/records.h"

namespace QV::python {
namespace {

thread_local int sensorsAtWork = 0;

}  // namespace

InSensor::InSensor() {
  ++sensorsAtWork;
}

InSensor::~InSensor() {
  --sensorsAtWork;
}

void InSensor::refuse() {
  if (sensorsAtWork > 0)
    throw std::runtime_error("a call from outside expected, one from within a sensor given");
}

PythonSensor::PythonSensor(const std::string& name, const std::string& family,
                           const Math::SensorFieldOfView2D& view)
    : Sensor(name, family, view) {}

template <typename Result>
Result PythonSensor::xCall(const char* method, Result (*convert)(py::handle)) const {
  const InSensor atWork;
  return callPython([&] {
    const py::function function = py::get_override(static_cast<const PythonSensor*>(this), method);
    if (!function)
      throw std::runtime_error("a method " + std::string(method) + " expected, none is there");
    return convert(function());
  });
}

std::vector<Math::MetricalData> PythonSensor::xGetData() const {
  return xCall<std::vector<Math::MetricalData>>("_get_data", &recordsFrom);
}

bool PythonSensor::xHardware(const char* method) {
  return xCall<bool>(method, [](py::handle result) {
    if (py::isinstance<py::bool_>(result)) return result.cast<bool>();
    throw py::type_error("True for success or False expected, " + describe(result) + " given");
  });
}

bool PythonSensor::xSubscribeToHardware() {
  return xHardware("_subscribe_to_hardware");
}

bool PythonSensor::xUnsubscribeFromHardware() {
  return xHardware("_unsubscribe_from_hardware");
}

void bindSensors(py::module_& module) {
  using sensor::Sensor;
  py::class_<PythonSensor, boost::shared_ptr<PythonSensor>>(module, "Sensor", R"(
A sensor of one's own: derive from it and give it the three methods below. A manager calls them.

Its hardware runs, and it is read, only while it has a subscriber, is enabled and has a good diagnosis.
The methods are called on any thread, one call at a time. They must not call a manager.

- `_get_data() -> list[Record]` measures and returns the records. An exception is logged and kept as the
  sensor's last error; the reading then gives no records.
- `_subscribe_to_hardware() -> bool` starts the hardware; False if that failed.
- `_unsubscribe_from_hardware() -> bool` stops it; False if that failed.)")
      .def(py::init<const std::string&, const std::string&, const Math::SensorFieldOfView2D&>(),
           "name"_a, "family_name"_a, "field_of_view"_a,
           "__init__(name: str, family_name: str, field_of_view: SensorFieldOfView2D) -> None")
      .def_property_readonly("name", &Sensor::getName, "str: The sensor's name.")
      .def_property_readonly("family_name", &Sensor::getFamilyName, "str: The name of its family.")
      .def_property_readonly("field_of_view", &PythonSensor::getFieldOfView,
                             "SensorFieldOfView2D: The sector that it covers.")
      .def_property_readonly("is_started", &Sensor::isStarted,
                             "bool: True while its hardware runs.")
      .def(
          "log_trouble",
          [](const PythonSensor& self, const std::string& message) {
            unlocked([&] {
              self.logTrouble(ko::log::Level::error, "Navigation.PythonSensor", "_get_data",
                              message);
            });
          },
          "message"_a,
          R"(log_trouble(message: str) -> None

Logs an error about the sensor and keeps it as its last error.)");
}

}  // namespace QV::python
