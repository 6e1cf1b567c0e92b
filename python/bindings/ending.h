#pragma once

#include <pybind11/pybind11.h>
#include <vector>

namespace QV::python {

/**
 * A thing that Python may end before it lets go of it, and that has to end before Python does:
 * threads can call nothing of Python's afterwards. All of it with the interpreter's lock.
 */
class Ending {
 public:
  Ending();
  virtual ~Ending();
  Ending(const Ending&) = delete;
  Ending& operator=(const Ending&) = delete;

  /** Any number of times. */
  virtual void end() = 0;
  /** Closes it for Python, which calls this; it may raise. */
  virtual void close() { end(); }

  /** Ends all that live, the last one first. */
  static void endAll();
};

/** Makes a `with` block close it. */
template <typename Class>
void bindBlock(Class& type) {
  namespace py = pybind11;
  using T = typename Class::type;
  type.def("__enter__", [](const py::object& self) { return self; })
      .def("__exit__", [](T& self, const py::args&) { self.close(); });
}

}  // namespace QV::python
