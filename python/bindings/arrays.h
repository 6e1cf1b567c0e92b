#pragma once

#include <pybind11/numpy.h>
#include <string>
#include <vector>

#include "platform/math/pose2d.h"
#include "platform/math/position.h"

namespace QV::python {

/** Row by row. */
using FloatArray = pybind11::array_t<float, pybind11::array::c_style>;

/** "(100, 3)". */
std::string shapeOf(const pybind11::array& array);

/**
 * The numbers of an object as an array, without a copy if it is one of these. What holds no real
 * numbers: TypeError that names `what` was expected by `whom`.
 */
FloatArray floatsFrom(const pybind11::object& object, const std::string& whom,
                      const std::string& what);

/** The same of shape (N, `columns`); ValueError for another. */
FloatArray rowsFrom(const pybind11::object& object, pybind11::ssize_t columns,
                    const std::string& whom, const std::string& what);

/** A view, row by row, that nobody can write through; `owner` is kept for as long as there is one.
 */
pybind11::array readOnlyView(const float* data, pybind11::ssize_t rows, pybind11::ssize_t columns,
                             pybind11::handle owner);

/** Shape (N, 3). */
pybind11::array viewOf(const std::vector<Math::Position3D>& points, pybind11::handle owner);

}  // namespace QV::python
