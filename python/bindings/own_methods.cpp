#include "python/bindings/own_methods.h"

#include <functional>
#include <initializer_list>
#include <utility>

namespace QV::python {
namespace {

/** The most arguments that a method in Python may take. */
constexpr std::size_t kMostArguments = 8;

template <std::size_t>
using Argument = const QVValue&;

/** A method to call, and whether its module goes first: a module's own methods must not keep it. */
struct Method {
  PyObject* function;
  bool isOwn;
};

std::size_t countArguments(const py::function& callable) {
  static constexpr int kVariable = 2;
  const py::object signature = py::module_::import("inspect").attr("signature")(callable);
  std::size_t count = 0;
  for (const py::handle parameter : signature.attr("parameters").attr("values")()) {
    if (py::int_(parameter.attr("kind")).cast<int>() >= kVariable)
      throw py::value_error("a callable with positional arguments expected, " + describe(callable) +
                            " given");
    ++count;
  }
  return count;
}

QVValue callMethod(QVModule& module, Method method,
                   std::initializer_list<const QVValue*> arguments) {
  return callPython([&] {
    py::list list;
    if (method.isOwn) list.append(py::cast(&module));
    for (const QVValue* argument : arguments) list.append(toPython(*argument));
    return valueFrom(py::handle(method.function)(*py::tuple(list)));
  });
}

template <std::size_t... index>
void bindWith(QVModule& module, const std::string& name, Method method,
              std::index_sequence<index...>) {
  module.bindMethod(name, std::function<QVValue(Argument<index>...)>(
                              [&module, method](Argument<index>... arguments) {
                                return callMethod(module, method, {&arguments...});
                              }));
}

/** Calls with as many arguments as are wanted; false for too many. */
template <std::size_t... count>
bool bindFor(QVModule& module, const std::string& name, Method method, std::size_t wanted,
             std::index_sequence<count...>) {
  return ((count == wanted &&
           (bindWith(module, name, method, std::make_index_sequence<count>()), true)) ||
          ...);
}

}  // namespace

OwnMethods::~OwnMethods() {
  for (py::object& method : methods) releaseFromAnywhere(method.release().ptr());
}

void OwnMethods::bind(QVModule& module, const std::string& name, const py::function& callable) {
  const std::size_t count = countArguments(callable);
  const bool isOwn = py::getattr(callable, "__self__", py::none()).is(py::cast(&module));
  methods.push_back(isOwn ? py::object(callable.attr("__func__")) : py::object(callable));
  if (!bindFor(module, name, {methods.back().ptr(), isOwn}, count,
               std::make_index_sequence<kMostArguments + 1>()))
    throw py::value_error("at most " + std::to_string(kMostArguments) + " arguments expected, " +
                          std::to_string(count) + " given");
}

}  // namespace QV::python
