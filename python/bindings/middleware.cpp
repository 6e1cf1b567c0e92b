#include <utility>

#include "platform/middleware/qv_broker.h"
#include "platform/middleware/qv_module.h"
#include "python/bindings/common.h"

namespace QV::python {
namespace {

/** The most arguments that a method in Python may take. */
constexpr std::size_t kMostArguments = 8;

template <std::size_t>
using Argument = const QVValue&;

/** A module whose methods are Python's. */
class PythonModule : public QVModule {
 public:
  using QVModule::QVModule;
  ~PythonModule() override {
    for (py::object& method : methods) releaseFromAnywhere(method.release().ptr());
  }

  void bind(const std::string& method, const py::function& callable) {
    const std::size_t count = xCount(callable);
    if (!xBindFor(method, xKeep(callable), count, std::make_index_sequence<kMostArguments + 1>()))
      throw py::value_error("at most " + std::to_string(kMostArguments) + " arguments expected, " +
                            std::to_string(count) + " given");
  }

 private:
  /** What is called, and whether this module goes first: its own methods must not keep it. */
  struct Callable {
    PyObject* function;
    bool isOwn;
  };

  static std::size_t xCount(const py::function& callable) {
    static constexpr int kVariable = 2;
    const py::object signature = py::module_::import("inspect").attr("signature")(callable);
    std::size_t count = 0;
    for (const py::handle parameter : signature.attr("parameters").attr("values")()) {
      if (py::int_(parameter.attr("kind")).cast<int>() >= kVariable)
        throw py::value_error("a callable with positional arguments expected, " +
                              describe(callable) + " given");
      ++count;
    }
    return count;
  }

  Callable xKeep(const py::function& callable) {
    const py::object self = py::cast(this);
    const bool isOwn = py::getattr(callable, "__self__", py::none()).is(self);
    methods.push_back(isOwn ? py::object(callable.attr("__func__")) : py::object(callable));
    return {methods.back().ptr(), isOwn};
  }

  template <std::size_t... count>
  bool xBindFor(const std::string& method, Callable callable, std::size_t wanted,
                std::index_sequence<count...>) {
    return ((count == wanted &&
             (xBindWith(method, callable, std::make_index_sequence<count>()), true)) ||
            ...);
  }

  template <std::size_t... index>
  void xBindWith(const std::string& method, Callable callable, std::index_sequence<index...>) {
    bindMethod(method, std::function<QVValue(Argument<index>...)>(
                           [this, callable](Argument<index>... arguments) {
                             return xCall(callable, {&arguments...});
                           }));
  }

  QVValue xCall(Callable callable, std::initializer_list<const QVValue*> arguments) {
    return callPython([&] {
      py::list list;
      if (callable.isOwn) list.append(py::cast(this));
      for (const QVValue* argument : arguments) list.append(toPython(*argument));
      const auto function = py::reinterpret_borrow<py::object>(callable.function);
      return valueFrom(function(*py::tuple(list)));
    });
  }

  std::vector<py::object> methods;
};

QVValue callModule(const boost::shared_ptr<QVBroker>& broker, const std::string& module,
                   const std::string& method, const py::args& arguments) {
  std::vector<QVValue> values;
  for (const py::handle argument : arguments) values.push_back(valueFrom(argument));
  return unlocked([&] { return broker->call(module, method, values); });
}

}  // namespace

void bindMiddleware(py::module_& module) {
  py::class_<PythonModule, boost::shared_ptr<PythonModule>>(module, "Module", R"(
A part of a robot that others call by name: derive from it, bind methods, register it at a broker.

Methods may be called on any thread, one call of Python at a time. What a method raises reaches its
caller as QVError.)")
      .def(py::init<const std::string&>(), "name"_a, "__init__(name: str) -> None")
      .def_property_readonly("name", &PythonModule::getName, "str: What others call it by.")
      .def("bind_method", &PythonModule::bind, "method"_a, "callable"_a,
           R"(bind_method(method: str, callable: Callable[..., Value]) -> None

Offers a callable of 0 to 8 positional arguments under a name, before the module is registered.
Arguments and result are None, bool, int, float, str, bytes or lists of these. A name that is bound
already, or a module that is registered: QVError.)");

  py::class_<QVBroker, boost::shared_ptr<QVBroker>>(module, "Broker", R"(
Holds the modules of a robot by name and carries the calls to them. Safe from any thread.)")
      .def(py::init([] { return QVBroker::create(); }), "__init__() -> None")
      .def("call", &callModule, "module"_a, "method"_a,
           R"(call(module: str, method: str, *arguments: Value) -> Value

Runs a method of a module on this thread. What goes wrong is a QVError: no such module or method,
arguments of a wrong number or type, and whatever the method raises.)")
      .def(
          "register_module",
          [](QVBroker& broker, const py::object& added) {
            if (!py::isinstance<PythonModule>(added))
              throw py::type_error("a Module expected, " + describe(added) + " given");
            auto shared = shareWithPython<boost::shared_ptr, PythonModule>(added);
            unlocked([&] { broker.registerModule(std::move(shared)); });
          },
          "module"_a,
          R"(register_module(module: Module) -> None

Keeps the module, and offers it under its name. A name in use: QVError.)")
      .def(
          "unregister_module",
          [](QVBroker& broker, const std::string& name) {
            unlocked([&] { broker.unregisterModule(name); });
          },
          "name"_a,
          R"(unregister_module(name: str) -> None

Calls that run go on to their end. An unknown name: QVError.)")
      .def(
          "has_module",
          [](const QVBroker& broker, const std::string& name) {
            return unlocked([&] { return broker.isModulePresent(name); });
          },
          "name"_a, "has_module(name: str) -> bool");
}

}  // namespace QV::python
