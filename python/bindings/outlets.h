#pragma once

#include <memory>
#include <pybind11/pybind11.h>
#include <stdexcept>

#include "outlets/outlet.h"
#include "session/usage_error.h"

namespace QV::python {

/** What can't be written, in Python an OSError. */
class WritingError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/** What goes wrong with a file is a WritingError. */
template <typename Write>
auto writing(Write write) {
  try {
    return write();
  } catch (const session::UsageError&) {
    throw;
  } catch (const std::runtime_error& error) {
    throw WritingError(error.what());
  }
}

/** What can be added to a server: shared so that Python's half lives as long as it is there. */
std::shared_ptr<outlets::Outlet> shareOutlet(const pybind11::object& outlet);

}  // namespace QV::python
