#include "platform/middleware/qv_error.h"
#include "python/bindings/common.h"
#include "python/bindings/outlets.h"
#include "session/usage_error.h"

namespace QV::python {
namespace {

/** The class QVError of Python, which lives as long as the process. */
PyObject* errorType = nullptr;

void raiseMiddlewareError(const QVError& error) {
  const auto type = py::reinterpret_borrow<py::object>(errorType);
  const py::object raised = type(error.what());
  raised.attr("module") = error.getModule();
  raised.attr("method") = error.getMethod();
  raised.attr("message") = error.getMessage();
  PyErr_SetObject(errorType, raised.ptr());
}

void translate(std::exception_ptr pointer) {
  try {
    if (pointer) std::rethrow_exception(pointer);
  } catch (const WritingError& error) {
    PyErr_SetString(PyExc_OSError, error.what());
  } catch (const session::UsageError& error) {
    PyErr_SetString(PyExc_ValueError, error.what());
  } catch (const QVError& error) {
    raiseMiddlewareError(error);
  }
}

}  // namespace

std::runtime_error plainError(py::error_already_set& error) {
  const py::object& value = error.value();
  std::string text = py::str(error.type().attr("__name__")).cast<std::string>();
  if (value) text += ": " + py::str(value).cast<std::string>();
  // The interrupt is set again, so that the next Python code raises it.
  if (error.matches(PyExc_KeyboardInterrupt)) PyErr_SetInterrupt();
  return std::runtime_error(text);
}

py::handle typeNamed(const char* name) {
  return py::object(py::module_::import("qv_sensor._types").attr(name)).release();
}

void releaseFromAnywhere(PyObject* kept) try {
  const Locked locked;
  Py_DECREF(kept);
} catch (const std::runtime_error&) {
  // No release after Python has ended: the process's end frees the object.
}

std::shared_ptr<PyObject> keep(const py::function& function) {
  return {function.inc_ref().ptr(), &releaseFromAnywhere};
}

void bindErrors(py::module_& module) {
  errorType = PyErr_NewExceptionWithDoc(
      "qv_sensor.QVError",
      "The error of a call to a robot's module. `module` and `method` name the call,\n"
      "`message` gives the reason.",
      PyExc_RuntimeError, nullptr);
  module.attr("QVError") = py::reinterpret_borrow<py::object>(errorType);
  py::register_exception_translator(&translate);
}

}  // namespace QV::python
