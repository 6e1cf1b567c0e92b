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

py::dict unbuiltOf(const SnapshotView& view) {
  py::dict unbuilt;
  for (const auto& [name, health] : view.snapshot->unbuilt)
    unbuilt[py::str(name)] = toPython(health);
  return unbuilt;
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

void bindPlaces(py::class_<SensorView>& state) {
  state
      .def_property_readonly("view", &viewOfSensor,
                             "tuple[Pose2D, SensorFieldOfView2D] | None: The sensor's pose in the "
                             "map and its field of view.")
      .def_property_readonly("records", &recordsOf,
                             "list[Record]: The records as the manager gave them.")
      .def_property_readonly(
          "hits", placesOf(&session::Marks::hits),
          "NDArray[np.float32]: The positions of obstacles, shape (N, 3), metres, in the map.")
      .def_property_readonly("misses", placesOf(&session::Marks::misses),
                             "NDArray[np.float32]: The ends of beams that met nothing, shape (N, "
                             "3), metres, in the map.")
      .def_property_readonly("echoes", &echoesOf,
                             "list[Echo]: The obstacles at a known range and unknown direction.");
}

void bindSensorState(py::module_& module) {
  py::class_<SensorView> state(module, "SensorState",
                               "The state of a sensor at one moment. It never changes.");
  state.def_property_readonly("name", of(&SensorState::name), "str: The sensor's name.")
      .def_property_readonly("family", of(&SensorState::family), "str: The name of its family.")
      .def_property_readonly("started", of(&SensorState::started),
                             "bool: True while its hardware runs.")
      .def_property_readonly("enabled", of(&SensorState::enabled),
                             "bool: True if it is allowed to run.")
      .def_property_readonly("diagnosis", of(&SensorState::diagnosis),
                             "bool: True if its diagnosis is good.")
      .def_property_readonly("subscribers", of(&SensorState::subscribers),
                             "set[str]: Its subscribers.")
      .def_property_readonly("rate", of(&SensorState::rate),
                             "float: The number of measurements per second.")
      .def_property_readonly(
          "age", of(&SensorState::age),
          "float | None: The age of its oldest record, seconds; None without one.")
      .def_property_readonly(
          "nearest", of(&SensorState::nearest),
          "float | None: The range of the nearest obstacle, metres; None without one.")
      .def_property_readonly("trouble", of(&SensorState::trouble),
                             "str: The message of its last error; empty without one.")
      .def_property_readonly(
          "health", [](const SensorView& view) { return toPython(view.state->health); },
          "Health: The health, with its reason.");
  bindPlaces(state);
}

void bindSurroundings(py::class_<SnapshotView>& snapshot) {
  snapshot
      .def_property_readonly(
          "frame", [](const SnapshotView& view) { return session::getName(view.snapshot->frame); },
          "str: The frame that records place their sensors in: \"map\" or \"robot\".")
      .def_property_readonly(
          "map",
          [](const SnapshotView& view) {
            return boost::const_pointer_cast<OccupancyMap>(view.snapshot->map);
          },
          "OccupancyMap | None: The map; None if it has none.")
      .def_property_readonly(
          "people", of(&Snapshot::people),
          "list[tuple[float, float]]: The positions of people in the map, metres.")
      .def_property_readonly(
          "touches", &touchesOf,
          "list[str]: The touched groups: the parts of the robot that something presses.");
}

}  // namespace

void bindSnapshots(py::module_& module) {
  bindSensorState(module);
  py::class_<SnapshotView> snapshot(module, "Snapshot", R"(
The state of a robot and its world at one moment. It never changes.)");
  snapshot
      .def_property_readonly("title", of(&Snapshot::title),
                             "str: The title for people: 'Virtual robot porter'.")
      .def_property_readonly("time", of(&Snapshot::time),
                             "int: The time of the snapshot, nanoseconds of clock().")
      .def_property_readonly("paused", of(&Snapshot::paused),
                             "bool: True while a LiveServer is paused.")
      .def_property_readonly("speed", of(&Snapshot::speed),
                             "float: The speed of a LiveServer: simulated seconds per real second.")
      .def_property_readonly("pose", of(&Snapshot::pose), "Pose2D: The robot's pose in the map.")
      .def_property_readonly(
          "velocity", of(&Snapshot::velocity),
          "Pose2D: The velocity in the ground frame: m/s forward and leftward, rad/s.")
      .def_property_readonly(
          "goal", of(&Snapshot::goal),
          "tuple[float, float] | None: The goal in the map, metres; None without one.")
      .def_property_readonly(
          "route", of(&Snapshot::route),
          "list[tuple[float, float]]: The remaining corners of the path to the goal in "
          "the map, metres, the next one first.")
      .def_property_readonly("faults", of(&Snapshot::faults),
                             "dict[str, FaultKind]: The faults in force, by sensor.")
      .def_property_readonly("sensors", &sensorsOf,
                             "list[SensorState]: The sensors, in the order of family and name.")
      .def_property_readonly("unbuilt", &unbuiltOf,
                             "dict[str, Health]: The sensors of the description that could not be "
                             "built, and why.");
  bindSurroundings(snapshot);
}

}  // namespace QV::python
