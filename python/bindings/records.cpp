#include "python/bindings/records.h"

#include <boost/make_shared.hpp>

#include "python/bindings/arrays.h"
#include "python/bindings/common.h"
#include "python/bindings/record_type.h"

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

void initialise(const py::object& self, const std::string& sensor, const std::string& family,
                const Math::SensorFieldOfView2D& view, const py::object& points,
                const py::object& transform, std::optional<ko::Clock::time_point> timestamp) {
  if (!isRecord(self)) throw py::type_error("a Record expected, " + describe(self) + " given");
  const Math::MetricalData record{sensor,
                                  family,
                                  view,
                                  transformFrom(transform),
                                  pointsFrom(points),
                                  timestamp.value_or(ko::Clock::now())};
  Record& made = unmadeRecord(self);
  // The copy is made once: a record never changes.
  if (made.data) return;
  made.owner = boost::make_shared<const std::vector<Math::MetricalData>>(1, record);
  made.data = &made.owner->front();
}

}  // namespace

py::list toPython(const SharedRecords& records, const Names& names) {
  if (!names.names) {
    py::list list(records->size());
    py::ssize_t at = 0;
    for (const auto& record : *records)
      PyList_SET_ITEM(list.ptr(), at++, toPython(Record{records, &record}).release().ptr());
    return list;
  }
  py::list list;
  for (const std::string& name : *names.names) {
    for (const auto& record : *records) {
      if (record.familyName == name || record.sensorName == name)
        list.append(toPython(Record{records, &record}));
    }
  }
  return list;
}

std::vector<Math::MetricalData> recordsFrom(py::handle object) {
  if (!py::isinstance<py::sequence>(object))
    throw py::type_error("a list of Records expected, " + describe(object) + " given");
  std::vector<Math::MetricalData> records;
  for (const py::handle item : py::reinterpret_borrow<py::sequence>(object)) {
    if (!isRecord(item))
      throw py::type_error("a list of Records expected, with " + describe(item) + " in it given");
    records.push_back(*recordOf(item).data);
  }
  return records;
}

void bindRecords(py::module_& module) {
  const py::object type = makeRecordType();
  // The function is named "Record", not "__init__": else pybind11 would take the object for one of
  // its own.
  type.attr("__init__") = py::cpp_function(
      &initialise, py::name("Record"), py::is_method(type), "sensor_name"_a, "family_name"_a,
      "field_of_view"_a, "points"_a, "sensor_transform"_a = py::none(), "timestamp"_a = py::none(),
      R"(__init__(sensor_name: str, family_name: str, field_of_view: SensorFieldOfView2D, points: ArrayLike, sensor_transform: ArrayLike | None = None, timestamp: int | None = None) -> None

Makes a record for a sensor of one's own. Copies `points`, shape (N, 3), metres, in the sensor's frame,
and `sensor_transform`, shape (3, 4), by default the identity. `timestamp` is in nanoseconds of clock(),
by default now. Raises ValueError for another shape.)");
  module.attr("Record") = type;
}

}  // namespace QV::python
