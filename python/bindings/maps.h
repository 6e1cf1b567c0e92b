#pragma once

#include <pybind11/pybind11.h>
#include <stdexcept>
#include <string>

namespace QV::python {

/** Reads a path from a str or a path object; anything else: TypeError. */
std::string pathFrom(const pybind11::object& path);

/** FileNotFoundError if there is no such file, else ValueError, with the error's text. */
[[noreturn]] void raiseFileError(const std::string& path, const std::runtime_error& error);

}  // namespace QV::python
