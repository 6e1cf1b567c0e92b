#include "python/bindings/common.h"
#include "python/bindings/ending.h"

PYBIND11_MODULE(_core, module) {
  using namespace QV::python;
  module.doc() = "The QV sensor library's C++ side; see the package qv_sensor.";
  py::options options;
  // Each docstring begins with its own.
  options.disable_function_signatures();
  module.attr("__version__") = QV_VERSION;
  bindErrors(module);
  bindMiddleware(module);
  bindMaps(module);
  bindScans(module);
  bindRecords(module);
  bindSensors(module);
  bindFactories(module);
  bindManagers(module);
  bindTime(module);
  bindWorld(module);
  bindUnits(module);
  bindRobots(module);
  bindSnapshots(module);
  bindSessions(module);
  bindOutlets(module);
  py::module_::import("atexit").attr("register")(py::cpp_function([] {
    beginToEnd();
    Ending::endAll();
  }));
}
