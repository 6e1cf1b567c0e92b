#pragma once

#include <memory>
#include <pybind11/pybind11.h>
#include <stdexcept>

#include "outlets/outlet.h"
#include "session/usage_error.h"

namespace QV::python {

/** An error of writing, in Python an OSError. */
class WritingError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/** Writes; what goes wrong with a file is a WritingError. */
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

/** Shares an outlet for a server, so that Python's half lives as long as it is there. */
std::shared_ptr<outlets::Outlet> shareOutlet(const pybind11::object& outlet);

}  // namespace QV::python
