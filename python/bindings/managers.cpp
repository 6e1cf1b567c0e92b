#include "python/bindings/common.h"
#include "python/bindings/manager_handle.h"

namespace QV::python {

py::object subscription(const py::object& target, const std::string& subscriber,
                        const py::object& names) {
  return py::module_::import("qv_sensor._subscription")
      .attr("Subscription")(target, subscriber, names);
}

py::object toPython(const ko::log::Record& line) {
  static const py::handle type = typeNamed("LogRecord");
  return type(ko::log::getName(line.level), line.category, line.method, line.message,
              line.timestamp);
}

void bindManagers(py::module_& module) {
  ManagerClass type(module, "SensorManager", R"(
Manages a robot's sensors, by name and by family. A `with` block closes it; later calls raise
RuntimeError. Thread-safe.)");
  type.def(py::init([](const py::iterable& sensors) {
             return std::make_shared<ManagerHandle>(std::make_shared<SensorListManager>(sensors));
           }),
           "sensors"_a,
           R"(__init__(sensors: Iterable[Sensor]) -> None

Takes sensors of one's own. Each call for records reads them. Raises ValueError for two with one name.)")
      .def("close", &ManagerHandle::close,
           "close() -> None\n\nEnds the manager; that of a session ends only with the session.");
  type.def_property_readonly("is_open", &ManagerHandle::isOpen, "bool: True until it is closed.")
      .def("subscription", &subscription, "subscriber"_a, "names"_a = py::none(), kSubscription);
  bindBlock(type);
  bindManagerReading(type);
  bindManagerQuestions(type);
  bindManagerHealth(type);
  bindManagerSwitches(type);
  bindManagerKinds(module);
}

}  // namespace QV::python
