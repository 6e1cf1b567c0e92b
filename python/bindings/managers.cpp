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
A robot's sensors, by name and by family: a `with` block ends it. Thread-safe; once ended,
RuntimeError.)");
  type.def(py::init([](const py::iterable& sensors) {
             return std::make_shared<ManagerHandle>(std::make_shared<SensorListManager>(sensors));
           }),
           "sensors"_a,
           R"(__init__(sensors: Iterable[Sensor]) -> None

Of sensors of one's own, which are read whenever somebody asks for records. Two of one name:
ValueError.)")
      .def("close", &ManagerHandle::close,
           "close() -> None\n\nEnds it. That of a session ends with the session.");
  type.def_property_readonly("is_open", &ManagerHandle::isOpen, "bool: Whether it has not ended.")
      .def("subscription", &subscription, "subscriber"_a, "names"_a = py::none(), kSubscription);
  bindBlock(type);
  bindManagerReading(type);
  bindManagerQuestions(type);
  bindManagerHealth(type);
  bindManagerSwitches(type);
  bindManagerKinds(module);
}

}  // namespace QV::python
