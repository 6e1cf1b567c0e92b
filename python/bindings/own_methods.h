#pragma once

#include <string>
#include <vector>

#include "platform/middleware/qv_module.h"
#include "python/bindings/common.h"

namespace QV::python {

/** The methods of a module that are written in Python. */
class OwnMethods {
 public:
  OwnMethods() = default;
  virtual ~OwnMethods();
  OwnMethods(const OwnMethods&) = delete;
  OwnMethods& operator=(const OwnMethods&) = delete;

  /** ValueError for a callable of too many arguments, or of any number of them. */
  void bind(QVModule& module, const std::string& name, const py::function& callable);

 private:
  std::vector<py::object> methods;
};

}  // namespace QV::python
