#include <utility>

#include <boost/make_shared.hpp>
#include <boost/weak_ptr.hpp>

#include "python/bindings/manager_handle.h"
#include "python/bindings/own_methods.h"
#include "python/bindings/records.h"
#include "sensor/hosting/navigation_module.h"
#include "sensor/hosting/record_value.h"
#include "sensor/real/sensor_factory.h"

namespace QV::python {
namespace {

/** A module of C++'s, beside whose methods there are Python's. */
template <typename Base>
class OwnModule : public Base, public OwnMethods {
 public:
  using Base::Base;
};

using PythonModule = OwnModule<QVModule>;
using HostingModule = OwnModule<sensor::NavigationModule>;

void bindOwnMethod(QVModule& module, const std::string& name, const py::function& callable) {
  // All that Python knows of are.
  dynamic_cast<OwnMethods&>(module).bind(module, name, callable);
}

/** Ends hosting: its sensors stop as it goes. */
void endHosting(HostingModule* last) {
  auto own = std::unique_ptr<HostingModule>(last);
  if (PyGILState_Check()) letGo(own);
}

template <typename... A>
boost::shared_ptr<HostingModule> makeHosting(const A&... arguments) {
  auto made = patiently([=] { return std::make_unique<HostingModule>(arguments...); });
  return {made.release(), &endHosting};
}

boost::shared_ptr<HostingModule> hostRobot(const boost::shared_ptr<QVBroker>& broker,
                                           const sensor::SensorFactory* factory) {
  return makeHosting(broker, factory ? *factory : sensor::SensorFactory::standard());
}

boost::shared_ptr<HostingModule> hostManager(const ManagerHandle& handle) {
  if (handle.isBorrowed())
    throw py::value_error("a manager of one's own expected, a session's given");
  const auto kept = handle.get();
  return makeHosting(boost::shared_ptr<sensor::SensorManager>(kept.get(), [kept](const auto*) {}));
}

std::shared_ptr<ManagerHandle> hostedManager(const boost::shared_ptr<HostingModule>& module) {
  return std::make_shared<ManagerHandle>([weak = boost::weak_ptr<HostingModule>(module)] {
    auto living = weak.lock();
    if (!living) throw std::runtime_error("a module that lives expected, one that has gone given");
    auto* const manager = &living->getManager();
    return std::shared_ptr<sensor::SensorManager>(manager, [living](const auto*) {});
  });
}

py::list recordsFromValue(const QVValue& value) {
  return toPython(SharedRecords(boost::make_shared<const std::vector<Math::MetricalData>>(
      sensor::recordsFromQVValue(value))));
}

void bindOwnModules(py::module_& module) {
  py::class_<QVModule, boost::shared_ptr<QVModule>>(module, "ModuleBase", R"(
An object of the robot with a name and methods that others call. Methods run on any thread; those in
Python one at a time. An exception of a method reaches its caller as QVError.)")
      .def_property_readonly("name", &QVModule::getName, "str: The name by which others call it.")
      .def("bind_method", &bindOwnMethod, "method"_a, "callable"_a,
           R"(bind_method(method: str, callable: Callable[..., Value]) -> None

Offers a callable with 0 to 8 positional arguments under a name. Call it before the module is
registered. Arguments and result are None, bool, int, float, str, bytes or lists of these. Raises
QVError for a name that is bound already, or a registered module.)");
  py::class_<PythonModule, QVModule, boost::shared_ptr<PythonModule>>(module, "Module", R"(
A module of one's own: derive from it, bind methods and register it at a broker.)")
      .def(py::init<const std::string&>(), "name"_a, "__init__(name: str) -> None");
}

void bindHosting(py::module_& module) {
  using Class = py::class_<HostingModule, QVModule, boost::shared_ptr<HostingModule>>;
  Class(module, "NavigationModule", R"(
Hosts sensors in a robot's middleware as the module "QVNavigation". Other modules call the manager's
operations by name ("subscribe", "getMetricalData"); the C++ class lists them. Derive from it to bind
more methods. Register it by ScopedModule: its sensors keep the broker, and the broker keeps the module.)")
      .def(py::init(&hostRobot), py::arg("robot").none(false), "factory"_a = py::none(),
           R"(__init__(robot: Broker | SensorManager, factory: SensorFactory | None = None) -> None

Hosts the sensors of the robot behind a broker, built by `factory`, or the sensors of a manager. Raises
ValueError for a session's manager.)")
      .def(py::init(&hostManager), "robot"_a)
      .def_property_readonly("manager", &hostedManager,
                             "SensorManager: The manager of its sensors.");
  module.def("records_from_value", &recordsFromValue, "value"_a,
             R"(records_from_value(value: Value) -> list[Record]

Converts the result of a NavigationModule's "getMetricalData" to records. Raises QVError for another
form.)");
}

}  // namespace

void bindModules(py::module_& module) {
  bindOwnModules(module);
  bindHosting(module);
}

}  // namespace QV::python
