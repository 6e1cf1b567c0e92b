#include "platform/middleware/qv_error.h"
#include "python/bindings/common.h"
#include "python/bindings/ending.h"
#include "python/bindings/faults.h"
#include "python/bindings/maps.h"
#include "python/bindings/waiting.h"
#include "robot/world/virtual_robot.h"
#include "session/shared_files.h"

namespace QV::python {
namespace {

using robot::VirtualRobot;

class RobotHandle : public Ending {
 public:
  RobotHandle(const py::object& description, boost::shared_ptr<OccupancyMap> map,
              const robot::WorldOptions& world, boost::shared_ptr<QVBroker> broker) {
    const std::string path = session::findRobot(pathFrom(description));
    prepareForRays(map, OccupancyMap::kSolidAbove);
    try {
      robot = unlocked([&] {
        return std::make_shared<VirtualRobot>(path, std::move(map), world, std::move(broker));
      });
    } catch (const QVError&) {
      throw;
    } catch (const std::runtime_error& error) {
      raiseFileError(path, error);
    }
  }
  ~RobotHandle() override { end(); }

  void end() override { letGo(robot); }
  /** Waits for units that measure, but for Ctrl-C. */
  void close() override {
    if (robot) patiently([last = std::exchange(robot, nullptr)]() mutable { last.reset(); });
  }

  /** Calls the robot while other threads may run Python. */
  template <typename Call>
  auto ask(Call call) const {
    if (!robot) throw std::runtime_error("a robot that lives expected, one that has ended given");
    auto kept = robot;
    return unlocked([&] {
      const auto own = std::move(kept);
      return call(*own);
    });
  }

 private:
  std::shared_ptr<VirtualRobot> robot;
};

using Class = py::class_<RobotHandle, std::shared_ptr<RobotHandle>>;

template <typename Result>
auto getter(Result (VirtualRobot::*get)() const) {
  return [get](const RobotHandle& handle) {
    return handle.ask([&](VirtualRobot& robot) { return (robot.*get)(); });
  };
}

void bindBody(Class& type) {
  type.def_property_readonly(
          "broker",
          [](const RobotHandle& handle) {
            return handle.ask([](VirtualRobot& robot) { return robot.getBroker(); });
          },
          "Broker: Holds its services, and goes on to.")
      .def_property(
          "pose", getter(&VirtualRobot::getPose),
          [](const RobotHandle& handle, const Math::Pose2D& pose) {
            handle.ask([&](VirtualRobot& robot) { robot.setPose(pose); });
          },
          "Pose2D: In the map, as of its last step; setting it, the odometry does not "
          "notice. One that is not finite: ValueError.")
      .def_property_readonly("velocity", getter(&VirtualRobot::getVelocity),
                             "Pose2D: Forward, leftward (m/s), turning (rad/s), in its own frame.")
      .def_property_readonly("odometry", getter(&VirtualRobot::getOdometry),
                             "Pose2D: Where its wheels say that it is, seen from its start.")
      .def_property_readonly("radius", getter(&VirtualRobot::getRadius),
                             "float: Of its body, metres.")
      .def_property_readonly("touched_groups", getter(&VirtualRobot::getTouchedGroups),
                             "set[str]: The parts that touch something.")
      .def_property_readonly("collision_count", getter(&VirtualRobot::getCollisionCount),
                             "int: How often it has run into something.")
      .def_property_readonly("people", getter(&VirtualRobot::getPeople),
                             "list[tuple[float, float]]: Where people are in the map, metres.")
      .def(
          "set_velocity",
          [](const RobotHandle& handle, float vx, float vy, float omega) {
            handle.ask([&](VirtualRobot& robot) { robot.setVelocity(vx, vy, omega); });
          },
          "vx"_a, "vy"_a, "omega"_a,
          R"(set_velocity(vx: float, vy: float, omega: float) -> None

Forward and leftward in m/s, turning in rad/s, until another command; not finite: ValueError.)");
}

void bindFaults(Class& type) {
  type.def(
          "set_fault",
          [](const RobotHandle& handle, const std::string& sensor, const std::string& kind,
             ko::Duration begin, std::optional<ko::Duration> end) {
            const robot::Fault fault{sensor, faultKindFrom(kind), begin,
                                     end.value_or(ko::Duration::max())};
            handle.ask([&](VirtualRobot& robot) { robot.setFault(fault); });
          },
          "sensor"_a, "kind"_a, "begin"_a = ko::Duration::zero(), "end"_a = py::none(),
          R"(set_fault(sensor: str, kind: FaultKind, begin: int = 0, end: int | None = None) -> None

Makes a sensor fail from `begin` to `end`, nanoseconds since the robot was made. A name or kind that
makes no sense: ValueError that says which do.)")
      .def(
          "clear_fault",
          [](const RobotHandle& handle, const std::string& sensor) {
            handle.ask([&](VirtualRobot& robot) { robot.clearFault(sensor); });
          },
          "sensor"_a, "clear_fault(sensor: str) -> None\n\nTakes back all faults of a sensor.")
      .def_property_readonly("faulty_sensors", getter(&VirtualRobot::getFaultySensors),
                             "list[str]: The sensors that can be made to fail.")
      .def(
          "get_possible_faults",
          [](const RobotHandle& handle, const std::string& sensor) {
            return namesOf(
                handle.ask([&](VirtualRobot& robot) { return robot.getPossibleFaults(sensor); }));
          },
          "sensor"_a, "get_possible_faults(sensor: str) -> list[FaultKind]");
}

}  // namespace

void bindRobots(py::module_& module) {
  Class type(module, "VirtualRobot", R"(
A whole robot in this process: a body in a map, its sensors and services, by the clock or in a
SimulatedTime. A `with` block ends it; ended, RuntimeError. Thread-safe.)");
  type.def(
          py::init([](const py::object& description, boost::shared_ptr<OccupancyMap> map,
                      const std::optional<robot::WorldOptions>& world,
                      boost::shared_ptr<QVBroker> broker) {
            return std::make_shared<RobotHandle>(description, std::move(map),
                                                 world.value_or(robot::WorldOptions()),
                                                 std::move(broker));
          }),
          "description"_a, py::arg("map").none(false), "world"_a = py::none(),
          "broker"_a = py::none(),
          R"(__init__(description: PathLike, map: OccupancyMap, world: WorldOptions | None = None, broker: Broker | None = None) -> None

From a URDF file, or one of the library's own by its name ("porter"). A missing file:
FileNotFoundError; what is malformed or makes no sense: ValueError.)")
      .def("close", &RobotHandle::close, "close() -> None\n\nEnds it; its services stay.");
  bindBlock(type);
  bindBody(type);
  bindFaults(type);
}

}  // namespace QV::python
