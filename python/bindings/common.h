#pragma once

#include <memory>
#include <pybind11/numpy.h>
#include <pybind11/pybind11.h>
#include <pybind11/stl.h>
#include <set>
#include <string>
#include <utility>

#include <boost/shared_ptr.hpp>

#include "platform/ko/log.h"
#include "python/bindings/casters.h"
#include "python/bindings/gil.h"

PYBIND11_DECLARE_HOLDER_TYPE(T, boost::shared_ptr<T>)

namespace QV::python {

namespace py = pybind11;
using namespace pybind11::literals;

/** Describes an object for a message: "0.5 (float)". */
std::string describe(py::handle object);

/**
 * Makes a C++ exception of what a Python one says, one that threads without the interpreter's lock
 * can throw on. An interrupt is kept for whoever waits for the call. Call it with the interpreter's
 * lock.
 */
std::runtime_error plainError(py::error_already_set& error);

/** Calls Python from a thread that does not hold the interpreter's lock. */
template <typename Call>
auto callPython(Call&& call) {
  const Locked locked;
  try {
    return std::forward<Call>(call)();
  } catch (py::error_already_set& error) {
    throw plainError(error);
  }
}

/** Gives a reference back, unless Python is ending. From any thread. */
void releaseFromAnywhere(PyObject* kept);

/** Keeps what C++ calls later, wherever copies of this go. */
std::shared_ptr<PyObject> keep(const py::function& function);

/**
 * Shares an object that Python made and may have derived from: both its halves live as long as the
 * pointer.
 */
template <template <typename> typename Pointer, typename T>
Pointer<T> shareWithPython(py::object object) {
  T* const pointer = object.cast<T*>();
  return Pointer<T>(pointer, [kept = object.release().ptr()](T*) { releaseFromAnywhere(kept); });
}

py::object toPython(const ko::log::Record& line);

/** Returns one of the types of qv_sensor._types; a reference that lasts as long as the process. */
py::handle typeNamed(const char* name);

/** A subscription of a manager or a session for a `with` block. */
py::object subscription(const py::object& target, const std::string& subscriber,
                        const py::object& names);
inline constexpr char kSubscription[] =
    R"(subscription(subscriber: str, names: Names = None) -> Subscription

Returns a subscription for a `with` block: inside it, `subscriber` is subscribed to sensors or families,
by default all.)";

void bindErrors(py::module_& module);
void bindBroker(py::module_& module);
void bindModules(py::module_& module);
void bindMaps(py::module_& module);
void bindScans(py::module_& module);
void bindRecords(py::module_& module);
void bindSensors(py::module_& module);
void bindManagers(py::module_& module);
void bindFactories(py::module_& module);
void bindTime(py::module_& module);
void bindWorld(py::module_& module);
void bindUnits(py::module_& module);
void bindUnitContext(py::module_& module);
void bindRobots(py::module_& module);
void bindSnapshots(py::module_& module);
void bindSessions(py::module_& module);
void bindOutlets(py::module_& module);
void bindRecordings(py::module_& module);
void bindLiveServer(py::module_& module);
/** Binds the graph, if the build has ROS 2. */
void bindGraph(py::module_& module);

}  // namespace QV::python
