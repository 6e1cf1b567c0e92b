#include <csignal>

#include "python/bindings/common.h"
#include "python/bindings/ending.h"

namespace QV::python {
namespace {

/** Refuses memory for an object whose `__init__` has not run, which pybind11 would ask for. */
void* refuseUnmade(std::size_t) {
  throw py::type_error("an object whose __init__ has run expected, one that was never made given");
}

void refuseUnmade(const py::module_& module) {
  for (const auto& [name, value] : module.attr("__dict__").cast<py::dict>()) {
    if (!PyType_Check(value.ptr())) continue;
    auto* const type = reinterpret_cast<PyTypeObject*>(value.ptr());
    if (auto* const info = py::detail::get_type_info(type)) info->operator_new = &refuseUnmade;
  }
}

/** Handles the signals that have come; Ctrl-C ends the process. */
void handleSignals() {
  if (PyErr_CheckSignals() == 0) return;
  if (PyErr_ExceptionMatches(PyExc_KeyboardInterrupt)) std::raise(SIGINT);
  PyErr_WriteUnraisable(nullptr);
}

/** A scope in which Ctrl-C ends the process where it would else raise KeyboardInterrupt. */
class InterruptEnds {
 public:
  InterruptEnds() {
    // The module signal is written in Python: a Ctrl-C that waits would be raised in there.
    const auto signals = py::module_::import("_signal");
    if (!signals.attr("getsignal")(SIGINT).is(signals.attr("default_int_handler"))) return;
    before = PyOS_setsig(SIGINT, SIG_DFL);
    handleSignals();
  }
  ~InterruptEnds() {
    if (before) PyOS_setsig(SIGINT, before);
  }
  InterruptEnds(const InterruptEnds&) = delete;
  InterruptEnds& operator=(const InterruptEnds&) = delete;

 private:
  PyOS_sighandler_t before = nullptr;
};

}  // namespace
}  // namespace QV::python

PYBIND11_MODULE(_core, module) {
  using namespace QV::python;
  module.doc() = "The QV sensor library's C++ side; see the package qv_sensor.";
  py::options options;
  // Each docstring begins with its own.
  options.disable_function_signatures();
  module.attr("__version__") = QV_VERSION;
  bindErrors(module);
  bindMaps(module);
  bindScans(module);
  bindRecords(module);
  bindSensors(module);
  bindFactories(module);
  bindManagers(module);
  bindBroker(module);
  bindModules(module);
  bindTime(module);
  bindWorld(module);
  bindUnits(module);
  bindRobots(module);
  bindSnapshots(module);
  bindSessions(module);
  bindOutlets(module);
  bindRecordings(module);
  bindLiveServer(module);
#ifdef QV_HAS_GRAPH
  bindGraph(module);
#endif
  refuseUnmade(module);
  py::module_::import("atexit").attr("register")(py::cpp_function([] {
    const InterruptEnds interruptEnds;
    beginToEnd();
    Ending::endAll();
  }));
}
