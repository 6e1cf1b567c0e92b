#pragma once

#include <pybind11/pybind11.h>
#include <stdexcept>
#include <string>

#include <boost/shared_ptr.hpp>

#include "platform/navigation/occupancy_map.h"

namespace QV::python {

/** Reads a path from a str or a path object; anything else: TypeError. */
std::string pathFrom(const pybind11::object& path);

/** FileNotFoundError if there is no such file, else ValueError, with the error's text. */
[[noreturn]] void raiseFileError(const std::string& path, const std::runtime_error& error);

/** Makes what rays look at in place of a map's cells: if it is large that takes a second, which
 * Ctrl-C leaves. */
void prepareForRays(const boost::shared_ptr<OccupancyMap>& map, float occupiedAbove);

}  // namespace QV::python
