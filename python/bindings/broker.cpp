#include "platform/middleware/qv_broker.h"
#include "platform/middleware/qv_module.h"
#include "python/bindings/common.h"
#include "python/bindings/waiting.h"

namespace QV::python {
namespace {

QVValue callModule(const boost::shared_ptr<QVBroker>& broker, const std::string& module,
                   const std::string& method, const py::args& arguments) {
  std::vector<QVValue> values;
  for (const py::handle argument : arguments) values.push_back(valueFrom(argument));
  return patiently([broker, module, method, values = std::move(values)] {
    return broker->call(module, method, values);
  });
}

void registerModule(QVBroker& broker, const py::object& added) {
  if (!py::isinstance<QVModule>(added))
    throw py::type_error("a Module expected, " + describe(added) + " given");
  auto shared = shareWithPython<boost::shared_ptr, QVModule>(added);
  unlocked([&] { broker.registerModule(std::move(shared)); });
}

void unregisterModule(const boost::shared_ptr<QVBroker>& broker, const std::string& name) {
  // The module may go with it, and stop its hardware.
  patiently([broker, name] { broker->unregisterModule(name); });
}

bool hasModule(const QVBroker& broker, const std::string& name) {
  return unlocked([&] { return broker.isModulePresent(name); });
}

}  // namespace

void bindBroker(py::module_& module) {
  py::class_<QVBroker, boost::shared_ptr<QVBroker>>(module, "Broker", R"(
Holds the modules of a robot by name and carries calls to them. Thread-safe.)")
      .def(py::init([] { return QVBroker::create(); }), "__init__() -> None")
      .def("call", &callModule, "module"_a, "method"_a,
           R"(call(module: str, method: str, *arguments: Value) -> Value

Runs a method of a module and returns its result. Raises QVError for an unknown module or method,
arguments of a wrong number or type, or an exception of the method. Ctrl-C ends only the waiting, not
the call.)")
      .def("register_module", &registerModule, "module"_a,
           R"(register_module(module: ModuleBase) -> None

Keeps the module and offers it under its name. Raises QVError for a name in use.)")
      .def("unregister_module", &unregisterModule, "name"_a,
           R"(unregister_module(name: str) -> None

Removes a module. Calls that run go on to their end. Raises QVError for an unknown name.)")
      .def("has_module", &hasModule, "name"_a, "has_module(name: str) -> bool");
}

}  // namespace QV::python
