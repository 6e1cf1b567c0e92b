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

Wants sensors or families, by default all, on behalf of `subscriber`; starting their hardware takes
its time. True if that was new to a sensor; a name that there is not is logged. `subscription` does
the same for a `with` block.)")
      .def("unsubscribe", &unsubscribeManager, "subscriber"_a, "names"_a = py::none(),
           R"(unsubscribe(subscriber: str, names: Names = None) -> bool

The mirror of subscribe.)")
      .def("enable_sensor_or_family", &enableManager, "name"_a, "enable"_a,
           R"(enable_sensor_or_family(name: str, enable: bool) -> bool

A disabled sensor stops and keeps its subscribers. False for a name that there is not.)")
      .def("set_sensor_diagnosis", &diagnoseManager, "sensor"_a, "success"_a,
           R"(set_sensor_diagnosis(sensor: str, success: bool) -> bool

A false diagnosis stops the sensor, a true one lets it try again. False for a name that there is
not.)")
      .def("look_again", &lookAgainAt,
           R"(look_again() -> None

Looks whether any sensor runs, after enabling or a diagnosis.)");
}

}  // namespace QV::python
