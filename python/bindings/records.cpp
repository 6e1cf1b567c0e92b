#include "python/bindings/records.h"

#include <boost/make_shared.hpp>

#include "python/bindings/arrays.h"
#include "python/bindings/common.h"

namespace QV::python {
namespace {

void checkRows(const FloatArray& array, py::ssize_t rows, py::ssize_t columns) {
  if (array.ndim() == 2 && array.shape(0) == rows && array.shape(1) == columns) return;
  throw py::value_error("Record: a sensor_transform of shape (3, 4) expected, shape " +
                        shapeOf(array) + " given");
}

Math::Transform transformFrom(const py::object& object) {
  if (object.is_none()) return {};
  const FloatArray array = floatsFrom(object, "Record", "a sensor_transform of shape (3, 4)");
  checkRows(array, 3, 4);
  return Math::Transform(std::vector<float>(array.data(), array.data() + array.size()));
}

std::vector<Math::Position3D> pointsFrom(const py::object& object) {
  const FloatArray array = rowsFrom(object, 3, "Record", "points of shape (N, 3)");
  const auto* const first = reinterpret_cast<const Math::Position3D*>(array.data());
  return {first, first + array.shape(0)};
}

Record makeRecord(const std::string& sensor, const std::string& family,
                  const Math::SensorFieldOfView2D& view, const py::object& points,
                  const py::object& transform, std::optional<ko::Clock::time_point> timestamp) {
  const Math::MetricalData record{sensor,
                                  family,
                                  view,
                                  transformFrom(transform),
                                  pointsFrom(points),
                                  timestamp.value_or(ko::Clock::now())};
  auto owner = boost::make_shared<const std::vector<Math::MetricalData>>(1, record);
  return {owner, &owner->front()};
}

py::array placed(const Record& record) {
  const auto points = Math::pointsInFrame(*record.data);
  FloatArray array(std::vector<py::ssize_t>{static_cast<py::ssize_t>(points.size()), 3});
  const float* const first = points.empty() ? nullptr : &points.front().x;
  std::copy(first, first + 3 * points.size(), array.mutable_data());
  return array;
}

std::string repr(const Record& record) {
  return "<Record of " + record.data->sensorName + ", " + record.data->familyName + ", " +
         std::to_string(record.data->points.size()) + " points at " +
         std::to_string(record.data->timestamp.time_since_epoch().count()) + " ns>";
}

/** Of an object of its class or of one derived from it. */
const Record& recordOf(PyObject* self) {
  const auto* const instance = reinterpret_cast<const py::detail::instance*>(self);
  // pybind11's own way looks the type up by its name.
  if (!instance->simple_layout) return py::handle(self).cast<const Record&>();
  const auto* const record = static_cast<const Record*>(instance->simple_value_holder[0]);
  if (!record) throw std::runtime_error("a Record expected, one that was never made given");
  return *record;
}

PyObject* getPoints(PyObject* self, void*) try {
  return viewOf(recordOf(self).data->points, self).release().ptr();
} catch (py::error_already_set& error) {
  error.restore();
  return nullptr;
} catch (const std::exception& error) {
  PyErr_SetString(PyExc_RuntimeError, error.what());
  return nullptr;
}

/** As Python's own classes have theirs: what everybody reads of each record costs half as much. */
void bindPoints(py::class_<Record>& type) {
  static PyGetSetDef points = {"points", &getPoints, nullptr,
                               "NDArray[np.float32]: Shape (N, 3), metres, in the sensor's frame, "
                               "those of simulated all-rays "
                               "sensors in the robot's; a read-only view.",
                               nullptr};
  type.attr("points") = py::reinterpret_steal<py::object>(
      PyDescr_NewGetSet(reinterpret_cast<PyTypeObject*>(type.ptr()), &points));
}

/** Bound without the names of types, so that each is known when the class is. */
void bindFields(py::class_<Record>& type) {
  type.def_property_readonly(
          "sensor_name", [](const Record& record) { return record.data->sensorName; },
          "str: Whose.")
      .def_property_readonly(
          "family_name", [](const Record& record) { return record.data->familyName; },
          "str: Of which family.")
      .def_property_readonly(
          "field_of_view", [](const Record& record) { return record.data->fieldOfView; },
          "SensorFieldOfView2D: What the sensor covers.")
      .def_property_readonly(
          "sensor_transform",
          [](const py::object& self) {
            return readOnlyView(self.cast<const Record&>().data->sensorTransform.values.data(), 3,
                                4, self);
          },
          "NDArray[np.float32]: Shape (3, 4), rotation and translation (m): places the sensor's "
          "frame in the robot's, that of a simulated robot in the map.")
      .def_property_readonly(
          "timestamp", [](const Record& record) { return record.data->timestamp; },
          "int: When it was measured, nanoseconds of clock().");
}

/** As pybind11 does it, but for the type, which is looked up once. */
py::object wrap(const SharedRecords& records, const Math::MetricalData& data) {
  static const auto* const type = py::detail::get_type_info(typeid(Record));
  return py::reinterpret_steal<py::object>(py::detail::type_caster_generic::cast(
      new Record{records, &data}, py::return_value_policy::take_ownership, {}, type, nullptr,
      nullptr));
}

}  // namespace

py::list toPython(const SharedRecords& records, const Names& names) {
  py::list list;
  if (!names.names) {
    for (const auto& record : *records) list.append(wrap(records, record));
    return list;
  }
  for (const std::string& name : *names.names) {
    for (const auto& record : *records) {
      if (record.familyName == name || record.sensorName == name)
        list.append(wrap(records, record));
    }
  }
  return list;
}

std::vector<Math::MetricalData> recordsFrom(py::handle object) {
  if (!py::isinstance<py::sequence>(object))
    throw py::type_error("a list of Records expected, " + describe(object) + " given");
  std::vector<Math::MetricalData> records;
  for (const py::handle item : py::reinterpret_borrow<py::sequence>(object)) {
    if (!py::isinstance<Record>(item))
      throw py::type_error("a list of Records expected, with " + describe(item) + " in it given");
    records.push_back(*item.cast<const Record&>().data);
  }
  return records;
}

void bindRecords(py::module_& module) {
  py::class_<Record> type(module, "Record", "One reading of one sensor. It never changes.");
  type.def(
          py::init(&makeRecord), "sensor_name"_a, "family_name"_a, "field_of_view"_a, "points"_a,
          "sensor_transform"_a = py::none(), "timestamp"_a = py::none(),
          R"(__init__(sensor_name: str, family_name: str, field_of_view: SensorFieldOfView2D, points: ArrayLike, sensor_transform: ArrayLike | None = None, timestamp: int | None = None) -> None

For sensors of one's own. `points` of shape (N, 3), metres, in the sensor's frame, and
`sensor_transform` of shape (3, 4), by default the identity, are copied; `timestamp` in nanoseconds
of clock(), by default now. Another shape: ValueError.)")
      .def("points_in_frame", &placed,
           R"(points_in_frame() -> NDArray[np.float32]

The points placed by the transform, shape (N, 3), metres: in the robot's frame, of a simulated robot
in the map. A copy.)")
      .def("__repr__", &repr);
  bindPoints(type);
  bindFields(type);
}

}  // namespace QV::python
