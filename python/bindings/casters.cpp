#include "python/bindings/casters.h"

#include <algorithm>
#include <array>

#include "python/bindings/common.h"

namespace QV::python {
namespace {

/** Numbers of a sequence, which may be an array. */
template <std::size_t count>
std::array<float, count> numbersFrom(py::handle object, const std::string& expected) {
  if (!PySequence_Check(object.ptr()) || py::isinstance<py::str>(object) ||
      py::isinstance<py::bytes>(object))
    throw py::type_error(expected + " expected, " + describe(object) + " given");
  const auto sequence = py::reinterpret_borrow<py::sequence>(object);
  if (sequence.size() != count)
    throw py::value_error(expected + " expected, " + describe(object) + " given");
  std::array<float, count> numbers;
  for (std::size_t i = 0; i < count; ++i) {
    const py::object item = sequence[i];
    const double number = PyFloat_AsDouble(item.ptr());
    if (PyErr_Occurred()) {
      PyErr_Clear();
      throw py::type_error(expected + " expected, " + describe(object) + " given");
    }
    numbers[i] = static_cast<float>(number);
  }
  return numbers;
}

class RecursionGuard {
 public:
  RecursionGuard() {
    if (Py_EnterRecursiveCall(" in a value of the middleware")) throw py::error_already_set();
  }
  ~RecursionGuard() { Py_LeaveRecursiveCall(); }
  RecursionGuard(const RecursionGuard&) = delete;
  RecursionGuard& operator=(const RecursionGuard&) = delete;
};

std::int64_t integerFrom(py::handle object) {
  const long long number = PyLong_AsLongLong(object.ptr());
  if (number == -1 && PyErr_Occurred()) throw py::error_already_set();
  return number;
}

bool isSequence(py::handle object) {
  return py::isinstance<py::list>(object) || py::isinstance<py::tuple>(object) ||
         py::isinstance<py::array>(object);
}

}  // namespace

std::string describe(py::handle object) {
  const std::string type = Py_TYPE(object.ptr())->tp_name;
  const std::string text = py::repr(object).cast<std::string>();
  constexpr std::size_t kMost = 60;
  return (text.size() > kMost ? text.substr(0, kMost) + "..." : text) + " (" + type + ")";
}

Names namesFrom(py::handle object) {
  if (object.is_none()) return {};
  if (py::isinstance<py::str>(object)) return {std::set{object.cast<std::string>()}};
  const std::string refusal = "a name or names expected, " + describe(object) + " given";
  if (!py::isinstance<py::iterable>(object)) throw py::type_error(refusal);
  std::set<std::string> names;
  for (const py::handle name : object) {
    if (!py::isinstance<py::str>(name)) throw py::type_error(refusal);
    names.insert(name.cast<std::string>());
  }
  return {names};
}

Math::Pose2D poseFrom(py::handle object) {
  const auto [x, y, theta] = numbersFrom<3>(object, "a pose x, y (m), theta (rad)");
  return {x, y, theta};
}

Math::Position2D positionFrom(py::handle object) {
  const auto [x, y] = numbersFrom<2>(object, "a position x, y (m)");
  return {x, y};
}

ko::Duration durationFrom(py::handle object) {
  if (py::isinstance<py::bool_>(object) || !PyIndex_Check(object.ptr()))
    throw py::type_error("an int of nanoseconds expected, " + describe(object) + " given");
  const auto number = py::reinterpret_steal<py::object>(PyNumber_Index(object.ptr()));
  if (!number) throw py::error_already_set();
  return ko::Duration(integerFrom(number));
}

ko::Clock::time_point endOf(ko::Duration duration) {
  if (duration < ko::Duration::zero())
    throw py::value_error("a duration of 0 ns or more expected, " +
                          std::to_string(duration.count()) + " given");
  const auto now = ko::Clock::now();
  return now + std::min<ko::Duration>(duration, ko::Clock::time_point::max() - now);
}

QVValue valueFrom(py::handle object) {
  const RecursionGuard guard;
  if (object.is_none()) return {};
  if (py::isinstance<py::bool_>(object)) return object.cast<bool>();
  if (py::isinstance<py::float_>(object)) return object.cast<double>();
  if (py::isinstance<py::str>(object)) return object.cast<std::string>();
  if (py::isinstance<py::bytes>(object)) {
    const auto bytes = object.cast<std::string_view>();
    return QVValue::Bytes(bytes.begin(), bytes.end());
  }
  if (isSequence(object)) {
    QVValue::Array array;
    for (const py::handle item : object) array.push_back(valueFrom(item));
    return array;
  }
  if (PyIndex_Check(object.ptr())) {
    const auto number = py::reinterpret_steal<py::object>(PyNumber_Index(object.ptr()));
    if (number) return integerFrom(number);
    PyErr_Clear();
  }
  if (PyNumber_Check(object.ptr())) {
    const double number = PyFloat_AsDouble(object.ptr());
    if (!PyErr_Occurred()) return number;
    PyErr_Clear();
  }
  throw py::type_error("None, a bool, a number, a str, bytes or a list of these expected, " +
                       describe(object) + " given");
}

py::object toPython(const Math::Pose2D& pose) {
  static const py::handle type = typeNamed("Pose2D");
  return type(pose.x, pose.y, pose.theta);
}

py::object toPython(const QVValue& value) {
  switch (value.getType()) {
    case QVValue::Type::invalid:
      return py::none();
    case QVValue::Type::boolean:
      return py::bool_(value.toBool());
    case QVValue::Type::integer:
      return py::int_(value.toInt());
    case QVValue::Type::floating:
      return py::float_(value.toDouble());
    case QVValue::Type::string:
      return py::str(value.toString());
    case QVValue::Type::binary: {
      const auto& bytes = *value.toBinary();
      return py::bytes(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    }
    case QVValue::Type::array:
      break;
  }
  py::list list;
  for (const QVValue& item : value.toArray()) list.append(toPython(item));
  return list;
}

}  // namespace QV::python
