#include "python/bindings/common.h"
#include "python/bindings/manager_handle.h"

namespace QV::python {
namespace {

bool subscribeManager(const ManagerHandle& handle, const std::string& subscriber,
                      const Names& names) {
  return handle.await([=](auto& manager) {
    return names.names ? manager.subscribe(subscriber, *names.names)
                       : manager.subscribe(subscriber);
  });
}

bool unsubscribeManager(const ManagerHandle& handle, const std::string& subscriber,
                        const Names& names) {
  return handle.await([=](auto& manager) {
    return names.names ? manager.unsubscribe(subscriber, *names.names)
                       : manager.unsubscribe(subscriber);
  });
}

bool enableManager(const ManagerHandle& handle, const std::string& name, bool enable) {
  return handle.await([=](auto& manager) { return manager.enableSensorOrFamily(name, enable); });
}

bool diagnoseManager(const ManagerHandle& handle, const std::string& sensor, bool success) {
  return handle.await([=](auto& manager) { return manager.setSensorDiagnosis(sensor, success); });
}

void lookAgainAt(const ManagerHandle& handle) {
  handle.await([](auto& manager) { manager.lookAgain(); });
}

}  // namespace

void bindManagerSwitches(ManagerClass& type) {
  type.def("subscribe", &subscribeManager, "subscriber"_a, "names"_a = py::none(),
           R"(subscribe(subscriber: str, names: Names = None) -> bool

Subscribes to sensors or families, by default all. Waits while hardware starts. Returns True if the
subscription was new to a sensor. An unknown name is logged. `subscription` does the same for a `with`
block.)")
      .def("unsubscribe", &unsubscribeManager, "subscriber"_a, "names"_a = py::none(),
           R"(unsubscribe(subscriber: str, names: Names = None) -> bool

Ends subscriptions of this subscriber, by default all. Returns True if a sensor lost this subscriber.)")
      .def("enable_sensor_or_family", &enableManager, "name"_a, "enable"_a,
           R"(enable_sensor_or_family(name: str, enable: bool) -> bool

Enables or disables a sensor or a family. A disabled sensor stops and keeps its subscribers. Returns
False for an unknown name.)")
      .def("set_sensor_diagnosis", &diagnoseManager, "sensor"_a, "success"_a,
           R"(set_sensor_diagnosis(sensor: str, success: bool) -> bool

Sets a sensor's diagnosis: a bad one (False) stops it, a good one lets it start again. Returns False
for an unknown name.)")
      .def("look_again", &lookAgainAt,
           R"(look_again() -> None

Starts the refresh if any sensor runs, and stops it if none does. Call it after
enable_sensor_or_family and set_sensor_diagnosis.)");
}

}  // namespace QV::python
