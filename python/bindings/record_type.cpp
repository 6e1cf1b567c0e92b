#include "python/bindings/record_type.h"

#include <new>

#include "python/bindings/arrays.h"
#include "python/bindings/common.h"

namespace QV::python {
namespace {

struct RecordObject {
  PyObject_HEAD Record record;
};

/** Lives as long as the process. */
PyTypeObject* recordType = nullptr;

const Math::MetricalData& dataOf(PyObject* self) {
  return *recordOf(self).data;
}

/** A function as CPython calls it: what C++ throws is raised. */
template <py::object (*call)(PyObject*), typename... Unused>
PyObject* raising(PyObject* self, Unused...) try {
  return call(self).release().ptr();
} catch (py::error_already_set& error) {
  error.restore();
  return nullptr;
} catch (const py::builtin_exception& error) {
  error.set_error();
  return nullptr;
} catch (const std::exception& error) {
  PyErr_SetString(PyExc_RuntimeError, error.what());
  return nullptr;
}

PyObject* allocate(PyTypeObject* type, PyObject*, PyObject*) {
  PyObject* const self = type->tp_alloc(type, 0);
  if (self) new (&reinterpret_cast<RecordObject*>(self)->record) Record();
  return self;
}

void deallocate(PyObject* self) {
  PyTypeObject* const type = Py_TYPE(self);
  reinterpret_cast<RecordObject*>(self)->record.~Record();
  type->tp_free(self);
  Py_DECREF(type);
}

py::object sensorName(PyObject* self) {
  return py::str(dataOf(self).sensorName);
}

py::object familyName(PyObject* self) {
  return py::str(dataOf(self).familyName);
}

py::object fieldOfView(PyObject* self) {
  return py::cast(dataOf(self).fieldOfView);
}

py::object points(PyObject* self) {
  return viewOf(dataOf(self).points, self);
}

py::object sensorTransform(PyObject* self) {
  return readOnlyView(dataOf(self).sensorTransform.values.data(), 3, 4, self);
}

py::object timestamp(PyObject* self) {
  return py::cast(dataOf(self).timestamp);
}

py::object pointsInFrame(PyObject* self) {
  const auto placed = Math::pointsInFrame(dataOf(self));
  FloatArray array(std::vector<py::ssize_t>{static_cast<py::ssize_t>(placed.size()), 3});
  const float* const first = placed.empty() ? nullptr : &placed.front().x;
  std::copy(first, first + 3 * placed.size(), array.mutable_data());
  return array;
}

py::object describeRecord(PyObject* self) {
  const auto& data = dataOf(self);
  return py::str("<Record of " + data.sensorName + ", " + data.familyName + ", " +
                 std::to_string(data.points.size()) + " points at " +
                 std::to_string(data.timestamp.time_since_epoch().count()) + " ns>");
}

template <py::object (*get)(PyObject*)>
constexpr PyGetSetDef property(const char* name, const char* doc) {
  return {name, &raising<get, void*>, nullptr, doc, nullptr};
}

PyGetSetDef properties[] = {
    property<&sensorName>("sensor_name", "str: The sensor's name."),
    property<&familyName>("family_name", "str: The name of its family."),
    property<&fieldOfView>("field_of_view",
                           "SensorFieldOfView2D: The sector that the sensor covers."),
    property<&points>(
        "points",
        "NDArray[np.float32]: The points, shape (N, 3), metres, in the sensor's frame; "
        "those of simulated sensors in the ground frame. A read-only view."),
    property<&sensorTransform>(
        "sensor_transform",
        "NDArray[np.float32]: The sensor's pose in the ground frame, or in the map for a simulated "
        "robot. Shape (3, 4): rotation and translation (m)."),
    property<&timestamp>("timestamp", "int: The time of the measurement, nanoseconds of clock()."),
    {nullptr, nullptr, nullptr, nullptr, nullptr},
};

PyMethodDef methods[] = {
    {"points_in_frame", &raising<&pointsInFrame, PyObject*>, METH_NOARGS,
     R"(points_in_frame() -> NDArray[np.float32]

Returns a copy of the points, placed by the transform: shape (N, 3), metres, in the ground frame, or in
the map for a simulated robot.)"},
    {nullptr, nullptr, 0, nullptr},
};

char doc[] = "One reading of one sensor. It never changes.";

PyType_Slot slots[] = {
    {Py_tp_doc, doc},
    {Py_tp_new, reinterpret_cast<void*>(&allocate)},
    {Py_tp_dealloc, reinterpret_cast<void*>(&deallocate)},
    {Py_tp_repr, reinterpret_cast<void*>(&raising<&describeRecord>)},
    {Py_tp_getset, properties},
    {Py_tp_methods, methods},
    {0, nullptr},
};

}  // namespace

py::object makeRecordType() {
  PyType_Spec spec = {"qv_sensor._core.Record", sizeof(RecordObject), 0,
                      Py_TPFLAGS_DEFAULT | Py_TPFLAGS_BASETYPE, slots};
  const auto type = py::reinterpret_steal<py::object>(PyType_FromSpec(&spec));
  if (!type) throw py::error_already_set();
  recordType = reinterpret_cast<PyTypeObject*>(type.ptr());
  // Kept for good.
  type.inc_ref();
  return type;
}

py::object toPython(Record record) {
  const auto object = py::reinterpret_steal<py::object>(allocate(recordType, nullptr, nullptr));
  if (!object) throw py::error_already_set();
  unmadeRecord(object) = std::move(record);
  return object;
}

bool isRecord(py::handle object) {
  return PyObject_TypeCheck(object.ptr(), recordType);
}

Record& recordOf(py::handle object) {
  Record& record = unmadeRecord(object);
  if (!record.data) throw py::type_error("a Record expected, one that was never made given");
  return record;
}

Record& unmadeRecord(py::handle object) {
  return reinterpret_cast<RecordObject*>(object.ptr())->record;
}

}  // namespace QV::python
