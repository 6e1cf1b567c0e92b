#pragma once

#include <optional>
#include <pybind11/pybind11.h>
#include <set>
#include <string>

#include "platform/ko/clock.h"
#include "platform/math/pose2d.h"
#include "platform/math/position.h"
#include "platform/math/transform.h"
#include "platform/middleware/qv_value.h"

namespace QV::python {

/** Names of sensors or families: of all, if there are none. */
struct Names {
  std::optional<std::set<std::string>> names;
};

/** Each throws TypeError or ValueError that says what is expected. */
Names namesFrom(pybind11::handle object);
Math::Pose2D poseFrom(pybind11::handle object);
Math::Position2D positionFrom(pybind11::handle object);
ko::Duration durationFrom(pybind11::handle object);
QVValue valueFrom(pybind11::handle object);

/** The time when so much has gone by; ValueError for a negative duration. */
ko::Clock::time_point endOf(ko::Duration duration);

pybind11::object toPython(const Math::Pose2D& pose);
pybind11::object toPython(const QVValue& value);

}  // namespace QV::python

namespace pybind11::detail {

/** Converts what comes from Python by a function that raises by itself. */
template <typename T, T (*from)(handle)>
struct RaisingCaster {
  bool load(handle source, bool) {
    value = from(source);
    return true;
  }
  template <typename>
  using cast_op_type = T;
  operator T() { return value; }

 protected:
  T value = {};
};

template <>
struct type_caster<QV::python::Names> : RaisingCaster<QV::python::Names, QV::python::namesFrom> {
  static constexpr auto name = const_name("str | Iterable[str] | None");
};

template <>
struct type_caster<QV::Math::Pose2D> : RaisingCaster<QV::Math::Pose2D, QV::python::poseFrom> {
  static constexpr auto name = const_name("Pose2D");
  static handle cast(const QV::Math::Pose2D& pose, return_value_policy, handle) {
    return QV::python::toPython(pose).release();
  }
};

template <>
struct type_caster<QV::Math::Position2D>
    : RaisingCaster<QV::Math::Position2D, QV::python::positionFrom> {
  static constexpr auto name = const_name("tuple[float, float]");
  static handle cast(const QV::Math::Position2D& position, return_value_policy, handle) {
    return make_tuple(position.x, position.y).release();
  }
};

template <>
struct type_caster<ko::Duration> : RaisingCaster<ko::Duration, QV::python::durationFrom> {
  static constexpr auto name = const_name("int");
  static handle cast(const ko::Duration& duration, return_value_policy, handle) {
    return int_(duration.count()).release();
  }
};

template <>
struct type_caster<ko::Clock::time_point> {
  PYBIND11_TYPE_CASTER(ko::Clock::time_point, const_name("int"));
  bool load(handle source, bool) {
    value = ko::Clock::time_point(QV::python::durationFrom(source));
    return true;
  }
  static handle cast(const ko::Clock::time_point& time, return_value_policy, handle) {
    return int_(time.time_since_epoch().count()).release();
  }
};

template <>
struct type_caster<QV::QVValue> : RaisingCaster<QV::QVValue, QV::python::valueFrom> {
  static constexpr auto name = const_name("Value");
  static handle cast(const QV::QVValue& value, return_value_policy, handle) {
    return QV::python::toPython(value).release();
  }
};

}  // namespace pybind11::detail
