#include "python/bindings/arrays.h"

#include "python/bindings/common.h"

namespace QV::python {

// Views show them as rows of three floats.
static_assert(sizeof(Math::Position3D) == 3 * sizeof(float));
static_assert(sizeof(Math::Pose2D) == 3 * sizeof(float));

std::string shapeOf(const py::array& array) {
  return py::str(array.attr("shape")).cast<std::string>();
}

FloatArray floatsFrom(const py::object& object, const std::string& whom, const std::string& what) {
  const std::string refusal = whom + ": " + what + " expected, ";
  const auto any = py::array::ensure(object);
  if (!any) throw py::type_error(refusal + describe(object) + " given");
  const char kind = any.dtype().kind();
  if (kind != 'f' && kind != 'i' && kind != 'u' && kind != 'b')
    throw py::type_error(refusal + "an array of " + py::str(any.dtype()).cast<std::string>() +
                         " given");
  // Makes floats of other numbers, too.
  const auto floats = py::array_t<float, py::array::c_style | py::array::forcecast>::ensure(any);
  if (!floats) throw py::error_already_set();
  return py::reinterpret_borrow<FloatArray>(floats);
}

FloatArray rowsFrom(const py::object& object, py::ssize_t columns, const std::string& whom,
                    const std::string& what) {
  const FloatArray array = floatsFrom(object, whom, what);
  // An empty list.
  if (array.ndim() == 1 && array.size() == 0)
    return FloatArray(std::vector<py::ssize_t>{0, columns});
  if (array.ndim() == 2 && array.shape(1) == columns) return array;
  throw py::value_error(whom + ": " + what + " expected, shape " + shapeOf(array) + " given");
}

py::array readOnlyView(const float* data, py::ssize_t rows, py::ssize_t columns, py::handle owner) {
  // Straight to numpy: pybind11's own way takes several times as long.
  auto& numpy = py::detail::npy_api::get();
  static PyObject* const floats = py::dtype::of<float>().release().ptr();
  // An empty array may have no memory, in place of which numpy would make some.
  static float nothing = 0.0f;
  const Py_intptr_t shape[] = {rows, columns};
  constexpr int kFlags =
      py::detail::npy_api::NPY_ARRAY_C_CONTIGUOUS_ | py::detail::npy_api::NPY_ARRAY_ALIGNED_;
  Py_INCREF(floats);
  auto view = py::reinterpret_steal<py::array>(
      numpy.PyArray_NewFromDescr_(numpy.PyArray_Type_, floats, 2, shape, nullptr,
                                  data ? const_cast<float*>(data) : &nothing, kFlags, nullptr));
  if (!view || numpy.PyArray_SetBaseObject_(view.ptr(), owner.inc_ref().ptr()) != 0)
    throw py::error_already_set();
  return view;
}

py::array viewOf(const std::vector<Math::Position3D>& points, py::handle owner) {
  const auto* const data = points.empty() ? nullptr : &points.front().x;
  return readOnlyView(data, static_cast<py::ssize_t>(points.size()), 3, owner);
}

}  // namespace QV::python
