#include "python/bindings/snapshots.h"

#include <boost/make_shared.hpp>

#include "python/bindings/arrays.h"
#include "python/bindings/common.h"
#include "python/bindings/health.h"
#include "python/bindings/records.h"

namespace QV::python {
namespace {

using session::SensorState;
using session::Snapshot;

struct SensorView {
  SharedSnapshot snapshot;
  const SensorState* state;
};

/** A property that is a member. */
template <typename T>
auto of(T Snapshot::*member) {
  return [member](const SnapshotView& view) { return (*view.snapshot).*member; };
}
template <typename T>
auto of(T SensorState::*member) {
  return [member](const SensorView& view) { return view.state->*member; };
}

/** A view of places in the map. */
auto placesOf(std::vector<Math::Position3D> session::Marks::*member) {
  return [member](const py::object& self) {
    return viewOf(self.cast<const SensorView&>().state->marks.*member, self);
  };
}

py::list recordsOf(const SensorView& view) {
  const auto& records = view.state->records;
  return toPython(SharedRecords(&records, [kept = view.snapshot](const auto*) {}));
}

py::list echoesOf(const SensorView& view) {
  static const py::handle type = typeNamed("Echo");
  py::list list;
  for (const auto& echo : view.state->marks.echoes)
    list.append(type(echo.origin, echo.range, echo.angularRange));
  return list;
}

py::list sensorsOf(const SnapshotView& view) {
  py::list list;
  for (const SensorState& state : view.snapshot->sensors)
    list.append(SensorView{view.snapshot, &state});
  return list;
}

py::list touchesOf(const SnapshotView& view) {
  py::list list;
  for (const auto& touch : view.snapshot->touches) list.append(touch.name);
  return list;
}

py::object viewOfSensor(const SensorView& view) {
  if (!view.state->view) return py::none();
  return py::make_tuple(view.state->view->apex, view.state->view->fieldOfView);
}

void bindSensorState(py::module_& module) {
  py::class_<SensorView>(module, "SensorState", "A sensor at one moment. It never changes.")
      .def_property_readonly("name", of(&SensorState::name), "str: Its own.")
      .def_property_readonly("family", of(&SensorState::family), "str: Its family's.")
      .def_property_readonly("started", of(&SensorState::started), "bool: Whether it runs.")
      .def_property_readonly("enabled", of(&SensorState::enabled), "bool: Whether it may.")
      .def_property_readonly("diagnosis", of(&SensorState::diagnosis), "bool: Whether it is sound.")
      .def_property_readonly("subscribers", of(&SensorState::subscribers),
                             "set[str]: Who wants it.")
      .def_property_readonly("rate", of(&SensorState::rate), "float: Measurements a second.")
      .def_property_readonly("age", of(&SensorState::age),
                             "float | None: Of its oldest record, seconds.")
      .def_property_readonly("nearest", of(&SensorState::nearest),
                             "float | None: The nearest obstacle, metres from the sensor.")
      .def_property_readonly("trouble", of(&SensorState::trouble),
                             "str: The last one's message, or nothing.")
      .def_property_readonly(
          "health", [](const SensorView& view) { return toPython(view.state->health); },
          "Health: How it is, and why.")
      .def_property_readonly(
          "view", &viewOfSensor,
          "tuple[Pose2D, SensorFieldOfView2D] | None: Where it looks, in the map.")
      .def_property_readonly("records", &recordsOf, "list[Record]: As the sensor gave them.")
      .def_property_readonly(
          "hits", placesOf(&session::Marks::hits),
          "NDArray[np.float32]: Where something stands, shape (N, 3), m, in the map.")
      .def_property_readonly("misses", placesOf(&session::Marks::misses),
                             "NDArray[np.float32]: Where beams that met nothing end, the same.")
      .def_property_readonly("echoes", &echoesOf, "list[Echo]: Obstacles somewhere on an arc.");
}

}  // namespace

void bindSnapshots(py::module_& module) {
  bindSensorState(module);
  py::class_<SnapshotView>(module, "Snapshot", R"(
All that there is to see of a robot and its world at one moment. It never changes.)")
      .def_property_readonly("title", of(&Snapshot::title), "str: What robot it is.")
      .def_property_readonly("time", of(&Snapshot::time), "int: Nanoseconds of clock().")
      .def_property_readonly("paused", of(&Snapshot::paused),
                             "bool: Whether time stands still for a LiveServer.")
      .def_property_readonly("speed", of(&Snapshot::speed),
                             "float: The simulated seconds in a second of a LiveServer.")
      .def_property_readonly("pose", of(&Snapshot::pose), "Pose2D: In the map.")
      .def_property_readonly("velocity", of(&Snapshot::velocity),
                             "Pose2D: m/s forward and leftward, rad/s.")
      .def_property_readonly("goal", of(&Snapshot::goal),
                             "tuple[float, float] | None: Where it is going, metres, in the map.")
      .def_property_readonly(
          "route", of(&Snapshot::route),
          "list[tuple[float, float]]: The corners of the way to it, metres, in the map.")
      .def_property_readonly("faults", of(&Snapshot::faults),
                             "dict[str, FaultKind]: What sensors are made to suffer, by sensor.")
      .def_property_readonly("sensors", &sensorsOf, "list[SensorState]: By family and name.")
      .def_property_readonly(
          "frame", [](const SnapshotView& view) { return session::getName(view.snapshot->frame); },
          "str: What records place their sensors in, \"map\" or \"robot\".")
      .def_property_readonly(
          "map",
          [](const SnapshotView& view) {
            return boost::const_pointer_cast<OccupancyMap>(view.snapshot->map);
          },
          "OccupancyMap | None: None for a recorded robot.")
      .def_property_readonly("people", of(&Snapshot::people),
                             "list[tuple[float, float]]: Where people are in the map, metres.")
      .def_property_readonly("touches", &touchesOf, "list[str]: The parts that touch something.");
}

}  // namespace QV::python
