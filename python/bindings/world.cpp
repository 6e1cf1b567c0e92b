#include "python/bindings/common.h"
#include "robot/world/world_options.h"

namespace QV::python {
namespace {

using robot::WorldOptions;

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
  py::class_<WorldBox>(module, "WorldBox",
                       "A solid block that stands or hangs in the map, upright. Metres.")
      .def(
          py::init(
              [](const Math::Pose2D& pose, float length, float width, float bottom, float top) {
                return WorldBox{pose, length, width, bottom, top};
              }),
          "pose"_a, "length"_a = 0.5f, "width"_a = 0.5f, "bottom"_a = 0.0f, "top"_a = 0.5f,
          R"(__init__(pose: PoseLike, length: float = 0.5, width: float = 0.5, bottom: float = 0.0, top: float = 0.5) -> None

Sets the centre and heading in the map, the length and width along the block's own x and y, and the
heights of its bottom and top above the floor.)")
      .def_readonly("pose", &WorldBox::pose, "Pose2D: The centre and heading in the map.");
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

Sets the centre and heading in the map, and the length and width along the hole's own x and y. A depth
below 0.1 m is a step down, from there on a hole.)")
      .def_readonly("pose", &FloorHole::pose, "Pose2D: The centre and heading in the map.");
  py::class_<Walker>(module, "Walker", "A person who walks from waypoint to waypoint and back.")
      .def(py::init([](std::vector<Math::Position2D> path, float speed) {
             return Walker{std::move(path), speed};
           }),
           "path"_a, "speed"_a = 0.8f,
           R"(__init__(path: Sequence[PositionLike], speed: float = 0.8) -> None

Sets the waypoints in the map, metres, and the speed, m/s. With one waypoint the person stands still.)")
      .def_readonly("path", &Walker::path,
                    "list[tuple[float, float]]: The waypoints in the map, metres.");
}

void bindPeriods(py::class_<WorldOptions>& options) {
  options
      .def_readwrite("step_period", &WorldOptions::stepPeriod,
                     "int: The time between two steps of the body, nanoseconds.")
      .def_readwrite("laser_period", &WorldOptions::laserPeriod,
                     "int: The time between two laser scans, nanoseconds.")
      .def_readwrite("sonar_period", &WorldOptions::sonarPeriod,
                     "int: The time between two sonar measurements, nanoseconds.")
      .def_readwrite("people_period", &WorldOptions::peoplePeriod,
                     "int: The time between two detections of people, nanoseconds.")
      .def_readwrite("laser_start", &WorldOptions::laserStart,
                     "int: The time from a laser's command to its first scan, nanoseconds.");
}

void bindOptions(py::module_& module) {
  py::class_<WorldOptions> options(module, "WorldOptions", R"(
The world of a virtual robot, and the quality of its sensors. The default is an empty world and perfect
sensors.)");
  options
      .def(fromKeywordArguments<WorldOptions>(),
           "__init__(**options: Any) -> None\n\nTakes each attribute as a keyword argument.")
      .def_readwrite(
          "start", &WorldOptions::start,
          "Pose2D: The robot's start pose in the map; a session uses its own `start` instead.")
      .def_readwrite("seed", &WorldOptions::seed, "int: The seed of all random numbers.")
      .def_readwrite("range_noise", &WorldOptions::rangeNoise,
                     "float: The standard deviation of each measured range, metres.")
      .def_readwrite("drop_outs", &WorldOptions::dropOuts,
                     "float: The share of ranges that are lost, 0 to 1.")
      .def_readwrite(
          "odometry_drift", &WorldOptions::odometryDrift,
          "float: The standard deviation of the odometry's systematic error, as a share of "
          "each way and turn.")
      .def_readwrite("wall_height", &WorldOptions::wallHeight,
                     "float: The height of the map's occupied cells, metres.")
      .def_readwrite("boxes", &WorldOptions::boxes,
                     "list[WorldBox]: The blocks; assign a whole list.")
      .def_readwrite("holes", &WorldOptions::holes,
                     "list[FloorHole]: The holes; assign a whole list.")
      .def_readwrite("people", &WorldOptions::people,
                     "list[Walker]: The people with a path; assign a whole list.")
      .def_readwrite("random_people", &WorldOptions::randomPeople,
                     "int: The number of further people, who walk at random.");
  bindPeriods(options);
}

}  // namespace

void bindWorld(py::module_& module) {
  bindBoxes(module);
  bindHolesAndPeople(module);
  bindOptions(module);
}

}  // namespace QV::python
