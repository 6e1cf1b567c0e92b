#include "python/bindings/common.h"
#include "robot/world/world_options.h"

namespace QV::python {
namespace {

/** A new object whose attributes are given as keyword arguments. */
template <typename T>
auto fromKeywordArguments() {
  return py::init([](const py::kwargs& keywords) {
    T made;
    // Keywords are set through the class's attributes, which check and convert.
    const py::object object = py::cast(&made, py::return_value_policy::reference);
    for (const auto& [name, value] : keywords) {
      if (!py::hasattr(py::type::of<T>(), name))
        throw py::type_error(py::str(name).cast<std::string>() + ": no such option");
      py::setattr(object, name, value);
    }
    return made;
  });
}

void bindBoxes(py::module_& module) {
  using robot::WorldBox;
  py::class_<WorldBox>(module, "WorldBox", "A solid block in the map, upright. Metres.")
      .def(
          py::init(
              [](const Math::Pose2D& pose, float length, float width, float bottom, float top) {
                return WorldBox{pose, length, width, bottom, top};
              }),
          "pose"_a, "length"_a = 0.5f, "width"_a = 0.5f, "bottom"_a = 0.0f, "top"_a = 0.5f,
          R"(__init__(pose: PoseLike, length: float = 0.5, width: float = 0.5, bottom: float = 0.0, top: float = 0.5) -> None

Its centre and heading in the map, its length and width along its own x and y, from which height to
which.)")
      .def_readonly("pose", &WorldBox::pose, "Pose2D: In the map.");
}

void bindHolesAndPeople(py::module_& module) {
  using robot::FloorHole;
  using robot::Walker;
  py::class_<FloorHole>(module, "FloorHole", "A part of the floor that lies lower. Metres.")
      .def(
          py::init([](const Math::Pose2D& pose, float length, float width, float depth) {
            return FloorHole{pose, length, width, depth};
          }),
          "pose"_a, "length"_a = 0.5f, "width"_a = 0.5f, "depth"_a = 1.0f,
          R"(__init__(pose: PoseLike, length: float = 0.5, width: float = 0.5, depth: float = 1.0) -> None

Its centre and heading in the map; a step down below 0.1 m of depth, a hole from there on.)")
      .def_readonly("pose", &FloorHole::pose, "Pose2D: In the map.");
  py::class_<Walker>(module, "Walker", "Somebody who walks from waypoint to waypoint and back.")
      .def(py::init([](std::vector<Math::Position2D> path, float speed) {
             return Walker{std::move(path), speed};
           }),
           "path"_a, "speed"_a = 0.8f,
           R"(__init__(path: Sequence[PositionLike], speed: float = 0.8) -> None

Positions in the map, metres; one alone stands still. Metres a second.)")
      .def_readonly("path", &Walker::path, "list[tuple[float, float]]: Metres, in the map.");
}

void bindOptions(py::module_& module) {
  using robot::WorldOptions;
  py::class_<WorldOptions>(module, "WorldOptions", R"(
The world of a virtual robot, and how well its sensors measure: by default an empty, perfect one.)")
      .def(fromKeywordArguments<WorldOptions>(),
           "__init__(**options: Any) -> None\n\nEach attribute is a keyword argument.")
      .def_readwrite("start", &WorldOptions::start,
                     "Pose2D: Of the robot in the map; a session's own `start` goes first.")
      .def_readwrite("seed", &WorldOptions::seed, "int: Of all that is random.")
      .def_readwrite("range_noise", &WorldOptions::rangeNoise,
                     "float: Standard deviation of each range, metres.")
      .def_readwrite("drop_outs", &WorldOptions::dropOuts,
                     "float: The share of ranges that are lost, 0 to 1.")
      .def_readwrite("odometry_drift", &WorldOptions::odometryDrift,
                     "float: Standard deviation of the odometry's systematic error, a share.")
      .def_readwrite("wall_height", &WorldOptions::wallHeight, "float: Metres.")
      .def_readwrite("boxes", &WorldOptions::boxes, "list[WorldBox]: Set as a whole.")
      .def_readwrite("holes", &WorldOptions::holes, "list[FloorHole]: Set as a whole.")
      .def_readwrite("people", &WorldOptions::people, "list[Walker]: Set as a whole.")
      .def_readwrite("random_people", &WorldOptions::randomPeople,
                     "int: People beside those who walk about at random.")
      .def_readwrite("step_period", &WorldOptions::stepPeriod, "int: Nanoseconds.")
      .def_readwrite("laser_period", &WorldOptions::laserPeriod, "int: Nanoseconds.")
      .def_readwrite("sonar_period", &WorldOptions::sonarPeriod, "int: Nanoseconds.")
      .def_readwrite("people_period", &WorldOptions::peoplePeriod, "int: Nanoseconds.")
      .def_readwrite("laser_start", &WorldOptions::laserStart,
                     "int: From a laser's command to its first scan, nanoseconds.");
}

}  // namespace

void bindWorld(py::module_& module) {
  bindBoxes(module);
  bindHolesAndPeople(module);
  bindOptions(module);
}

}  // namespace QV::python
