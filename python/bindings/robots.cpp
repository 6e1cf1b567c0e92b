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
          "Broker: The broker of its modules; stays after the robot's end.")
      .def_property(
          "pose", getter(&VirtualRobot::getPose),
          [](const RobotHandle& handle, const Math::Pose2D& pose) {
            handle.ask([&](VirtualRobot& robot) { robot.setPose(pose); });
          },
          "Pose2D: The robot's pose in the map, as of its last step. Setting it does not change "
          "the odometry. Raises ValueError for a pose that is not finite.")
      .def_property_readonly(
          "velocity", getter(&VirtualRobot::getVelocity),
          "Pose2D: The velocity in the ground frame: m/s forward and leftward, rad/s.")
      .def_property_readonly("odometry", getter(&VirtualRobot::getOdometry),
                             "Pose2D: The pose by odometry, relative to the start pose.")
      .def_property_readonly("radius", getter(&VirtualRobot::getRadius),
                             "float: The radius of its body, metres.")
      .def_property_readonly("touched_groups", getter(&VirtualRobot::getTouchedGroups),
                             "set[str]: The bumpers that are pressed now, by link.")
      .def_property_readonly("collision_count", getter(&VirtualRobot::getCollisionCount),
                             "int: The number of times that it ran into something.")
      .def_property_readonly(
          "people", getter(&VirtualRobot::getPeople),
          "list[tuple[float, float]]: The positions of people in the map, metres.")
      .def(
          "set_velocity",
          [](const RobotHandle& handle, float vx, float vy, float omega) {
            handle.ask([&](VirtualRobot& robot) { robot.setVelocity(vx, vy, omega); });
          },
          "vx"_a, "vy"_a, "omega"_a,
          R"(set_velocity(vx: float, vy: float, omega: float) -> None

Drives forward and leftward (m/s) and turns left (rad/s), until another command. Raises ValueError for a
velocity that is not finite.)");
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

Makes a sensor fail from `begin` to `end`, nanoseconds since the robot was made; `end` None: for good.
Raises ValueError for a wrong name or kind; it lists the right ones.)")
      .def(
          "clear_fault",
          [](const RobotHandle& handle, const std::string& sensor) {
            handle.ask([&](VirtualRobot& robot) { robot.clearFault(sensor); });
          },
          "sensor"_a, "clear_fault(sensor: str) -> None\n\nEnds all faults of a sensor.")
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
A whole robot in this process: a body in a map, with sensors and modules. It runs by the clock, or in a
SimulatedTime. A `with` block closes it; later calls raise RuntimeError. Thread-safe.)");
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

Reads a URDF file, or one of the library's own descriptions by its name ("porter"). Raises
FileNotFoundError for a missing file, ValueError for a malformed description or an impossible world.)")
      .def("close", &RobotHandle::close, "close() -> None\n\nEnds the robot; its modules stay.");
  bindBlock(type);
  bindBody(type);
  bindFaults(type);
}

}  // namespace QV::python
