#include "platform/middleware/qv_error.h"
#include "python/bindings/faults.h"
#include "python/bindings/manager_handle.h"
#include "python/bindings/maps.h"
#include "python/bindings/session_handle.h"
#include "python/bindings/snapshots.h"
#include "sensor/core/scoped_subscription.h"
#include "session/open.h"
#include "session/sensor_check.h"
#include "session/usage_error.h"

namespace QV::python {
namespace {

using session::Session;
using Handle = std::shared_ptr<SessionHandle>;
using Class = py::class_<SessionHandle, Handle>;

/** What a session is opened with, of Python's words. */
session::OpenOptions optionsFrom(const py::object& map, std::optional<Math::Pose2D> start,
                                 bool simulatedTime) {
  session::OpenOptions options;
  options.start = start;
  options.time = simulatedTime ? session::TimeSource::simulated : session::TimeSource::clock;
  if (py::isinstance<OccupancyMap>(map)) {
    options.map = map.cast<boost::shared_ptr<OccupancyMap>>();
  } else {
    options.mapFile = pathFrom(map);
  }
  return options;
}

template <typename Open>
Handle open(const std::string& file, bool ownTime, Open open) {
  try {
    return std::make_shared<SessionHandle>(
        unlocked([&] { return std::shared_ptr<Session>(open()); }), ownTime);
  } catch (const session::UsageError&) {
    throw;
  } catch (const QVError&) {
    throw;
  } catch (const std::runtime_error& error) {
    raiseFileError(file, error);
  }
}

Handle openVirtual(const py::object& robot, const py::object& map,
                   std::optional<Math::Pose2D> start, const robot::WorldOptions* world,
                   const sensor::SensorFactory* sensors, const robot::UnitFactory* units,
                   bool somebodyAhead, bool simulatedTime) {
  session::OpenOptions options = optionsFrom(map, start, simulatedTime);
  if (world) options.world = *world;
  if (sensors) options.sensors = *sensors;
  if (units) options.units = *units;
  options.somebodyAhead = somebodyAhead;
  const std::string file = pathFrom(robot);
  return open(file, simulatedTime, [&] { return session::openVirtual(file, options); });
}

Handle openSimulated(int kind, const py::object& map, std::optional<Math::Pose2D> start,
                     bool simulatedTime) {
  const session::OpenOptions options = optionsFrom(map, start, simulatedTime);
  return open(options.mapFile, simulatedTime,
              [&] { return session::openSimulated(kind, options); });
}

Handle openRecording(const py::object& log, const py::object& poses) {
  const std::string file = pathFrom(log);
  std::optional<std::string> posesFile;
  if (!poses.is_none()) posesFile = pathFrom(poses);
  return open(file, true, [&] { return session::openRecording(file, posesFile); });
}

std::shared_ptr<ManagerHandle> managerOf(const Handle& handle) {
  return std::make_shared<ManagerHandle>([weak = std::weak_ptr(handle)] {
    const auto living = weak.lock();
    if (!living)
      throw std::runtime_error("a session that lives expected, one that has ended given");
    const auto& session = living->get();
    return std::shared_ptr<sensor::SensorManager>(session, &session->getManager());
  });
}

std::set<std::string> given(const Names& names, const SessionHandle& handle) {
  if (names.names) return *names.names;
  return handle.ask([](Session& session) { return session.getManager().getFamilyNames(); });
}

py::list check(SessionHandle& handle, const Names& names) {
  static const py::handle type = typeNamed("Check");
  session::CheckOptions options;
  if (names.names) options.sensors = *names.names;
  bool interrupted = false;
  options.goesOn = [&](double) {
    const Locked locked;
    interrupted = PyErr_CheckSignals() != 0;
    return !interrupted;
  };
  const auto checked =
      handle.use([&](Session& session) { return session::checkSensors(session, options); });
  if (interrupted) throw py::error_already_set();
  py::list list;
  for (const auto& each : checked)
    list.append(type(each.name, each.family, session::getName(each.verdict), each.why, each.records,
                     each.points));
  return list;
}

std::map<std::string, std::string> awaitRecords(SessionHandle& handle, ko::Duration limit,
                                                const Names& names) {
  constexpr ko::Duration kPoll{10'000'000};
  const auto wanted = given(names, handle);
  const auto end = endOf(limit);
  for (;;) {
    auto missing = handle.use(
        [&](Session& session) { return sensor::findMissingRecords(session.getManager(), wanted); });
    const auto left = end - ko::Clock::now();
    if (missing.empty() || left <= ko::Duration::zero()) return missing;
    handle.run(std::min<ko::Duration>(left, kPoll));
  }
}

void bindOpening(py::module_& module) {
  module.def(
      "open_virtual", &openVirtual, "robot"_a = "porter", py::kw_only(), "map"_a = "apartment",
      "start"_a = py::none(), "world"_a = py::none(), "sensors"_a = py::none(),
      "units"_a = py::none(), "somebody_ahead"_a = false, "simulated_time"_a = true,
      R"(open_virtual(robot: PathLike = "porter", *, map: OccupancyMap | PathLike = "apartment", start: PoseLike | None = None, world: WorldOptions | None = None, sensors: SensorFactory | None = None, units: UnitFactory | None = None, somebody_ahead: bool = False, simulated_time: bool = True) -> Session

A virtual robot with the sensors that its description names, and what measures for them.

Robot and map are the library's own by name, or files (URDF, map_server) by path. `start` is a pose
in the map, by default where there is room. Time is simulated and the session's own, one at a time,
or with `simulated_time=False` the clock's, a SimulatedTime's within its block. A missing file:
FileNotFoundError; a malformed one, an unknown name or an impossible world: ValueError.)");
  module.def(
      "open_simulated", &openSimulated, "kind"_a, py::kw_only(), "map"_a = "apartment",
      "start"_a = py::none(), "simulated_time"_a = true,
      R"(open_simulated(kind: int, *, map: OccupancyMap | PathLike = "apartment", start: PoseLike | None = None, simulated_time: bool = True) -> Session

A robot with the simulated sensors of a kind, -1, 0 or 1; ValueError for another.)");
  module.def("open_recording", &openRecording, "log"_a, "poses"_a = py::none(),
             R"(open_recording(log: PathLike, poses: PathLike | None = None) -> Session

A log of a lidar (CARMEN) or of sonars, which its content tells; `poses` is for sonars, by default
poses.txt beside the log. It stands at its first step. A missing file: FileNotFoundError; a malformed
one: ValueError with file and line.)");
}

/** What is written in Python. */
void bindMore(Class& type) {
  type.def_property_readonly("is_open", &SessionHandle::isOpen, "bool: Whether it has not ended.")
      .def("subscription", &subscription, "subscriber"_a, "names"_a = py::none(), kSubscription)
      .def(
          "_repr_html_",
          [](const py::object& self) {
            return py::module_::import("qv_sensor._plot").attr("html_of")(self);
          },
          "_repr_html_() -> str\n\nIts picture, for notebooks.");
}

void bindSwitches(Class& type) {
  type.def(
          "subscribe",
          [](const SessionHandle& self, const std::string& subscriber, const Names& names) {
            const auto wanted = given(names, self);
            self.ask([&](Session& session) { session.subscribe(subscriber, wanted); });
          },
          "subscriber"_a, "names"_a = py::none(),
          R"(subscribe(subscriber: str, names: Names = None) -> None

Wants sensors or families, by default all. Starting hardware takes its time, simulated or not; on
another thread it waits for the session to be run. An unknown name: ValueError. `subscription` does
the same for a `with` block. From any thread.)")
      .def(
          "unsubscribe",
          [](const SessionHandle& self, const std::string& subscriber, const Names& names) {
            const auto wanted = given(names, self);
            self.ask([&](Session& session) { session.unsubscribe(subscriber, wanted); });
          },
          "subscriber"_a, "names"_a = py::none(),
          "unsubscribe(subscriber: str, names: Names = None) -> None\n\nThe mirror of subscribe.")
      .def(
          "enable",
          [](const SessionHandle& self, const std::string& name, bool on) {
            self.ask([&](Session& session) { session.enable(name, on); });
          },
          "name"_a, "on"_a,
          R"(enable(name: str, on: bool) -> None

A sensor or a family. An unknown name: ValueError. From any thread.)")
      .def(
          "diagnose",
          [](const SessionHandle& self, const std::string& sensor, bool success) {
            self.ask([&](Session& session) { session.diagnose(sensor, success); });
          },
          "sensor"_a, "success"_a,
          R"(diagnose(sensor: str, success: bool) -> None

A bad diagnosis stops a sensor, a good one lets it try again. From any thread.)")
      .def(
          "set_demand",
          [](SessionHandle& self, const std::map<std::string, std::set<std::string>>& demand) {
            self.use([&](Session& session) { session.setDemand(demand); });
          },
          "demand"_a,
          R"(set_demand(demand: Mapping[str, Set[str]]) -> None

Who wants which sensors from now on, beside those who subscribed.)");
}

void bindDriving(Class& type) {
  type.def(
          "drive",
          [](SessionHandle& self, float forward, float turn) {
            if (!std::isfinite(forward) || !std::isfinite(turn))
              throw py::value_error("finite speeds expected, " + std::to_string(forward) + ", " +
                                    std::to_string(turn) + " given");
            self.look([&](Session& session) { session.drive(forward, turn); });
          },
          "forward"_a, "turn"_a,
          "drive(forward: float, turn: float) -> None\n\nm/s and rad/s, until another command.")
      .def(
          "set_goal",
          [](SessionHandle& self, const Math::Position2D& position) {
            self.use([&](Session& session) { session.setGoal(position); });
          },
          "position"_a,
          R"(set_goal(position: PositionLike) -> None

Finds a way there, in the map, and goes it as the session is run. No way: ValueError.)")
      .def(
          "follow",
          [](SessionHandle& self, const std::vector<Math::Position2D>& path, double speed,
             double turnSpeed) {
            return ko::Duration(std::llround(1e9 * self.use([&](Session& session) {
              return session.follow(path, speed, turnSpeed);
            })));
          },
          "path"_a, "speed"_a = 0.5, "turn_speed"_a = 1.0,
          R"(follow(path: Sequence[PositionLike], speed: float = 0.5, turn_speed: float = 1.0) -> int

Along straight lines of two positions or more, in the map, at m/s and rad/s: the nanoseconds that it
takes, as the session is run.)")
      .def(
          "wander", [](SessionHandle& self) { self.use([](Session& s) { s.wander(); }); },
          "wander() -> None\n\nDrives about where there is room.")
      .def(
          "stop", [](SessionHandle& self) { self.look([](Session& s) { s.stop(); }); },
          "stop() -> None\n\nStands still.")
      .def_property(
          "pose",
          [](const SessionHandle& self) {
            return self.look([](Session& session) { return session.getPose(); });
          },
          [](SessionHandle& self, const Math::Pose2D& pose) {
            self.use([&](Session& session) { session.setPose(pose); });
          },
          "Pose2D: Of the robot in the map.");
}

void bindFaults(Class& type) {
  type.def(
          "set_fault",
          [](SessionHandle& self, const std::string& sensor, const std::string& kind,
             ko::Duration begin, std::optional<ko::Duration> end) {
            const robot::Fault fault{sensor, faultKindFrom(kind), begin,
                                     end.value_or(ko::Duration::max())};
            self.look([&](Session& session) { session.setFault(fault); });
          },
          "sensor"_a, "kind"_a, "begin"_a = ko::Duration::zero(), "end"_a = py::none(),
          R"(set_fault(sensor: str, kind: FaultKind, begin: int = 0, end: int | None = None) -> None

Makes a sensor of a virtual robot fail from `begin` to `end`, nanoseconds since the session was
opened. A name or kind that makes no sense: ValueError that says which do.)")
      .def(
          "clear_fault",
          [](SessionHandle& self, const std::string& sensor) {
            self.look([&](Session& session) { session.clearFault(sensor); });
          },
          "sensor"_a, "clear_fault(sensor: str) -> None\n\nTakes back all faults of a sensor.")
      .def_property_readonly(
          "faulty_sensors",
          [](const SessionHandle& self) {
            return self.look([](Session& session) { return session.getFaultySensors(); });
          },
          "list[str]: The sensors that can be made to fail: none without a virtual robot.")
      .def(
          "get_possible_faults",
          [](const SessionHandle& self, const std::string& sensor) {
            return namesOf(
                self.look([&](Session& session) { return session.getPossibleFaults(sensor); }));
          },
          "sensor"_a, "get_possible_faults(sensor: str) -> list[FaultKind]");
}

void bindTime(Class& type) {
  type.def("run", &SessionHandle::run, "duration"_a,
           R"(run(duration: int) -> None

Lets nanoseconds go by, simulated or the machine's; Ctrl-C ends it. Negative: ValueError.)")
      .def("await_records", &awaitRecords, "limit"_a, "names"_a = py::none(),
           R"(await_records(limit: int, names: Names = None) -> dict[str, str]

Runs until each sensor, by default all, has a fresh record or a reason for none, but not longer than
`limit` nanoseconds. What is missing by then, and why, by sensor.)")
      .def(
          "step", [](SessionHandle& self) { return self.use([](Session& s) { return s.step(); }); },
          "step() -> bool\n\nA recording's next step, False at its end; of others, 0.1 s.")
      .def_property_readonly(
          "settling_time",
          [](const SessionHandle& self) {
            return self.look([](Session& session) { return session.getSettlingTime(); });
          },
          "int: So long after a subscription every sensor has given its first record, "
          "nanoseconds.");
}

}  // namespace

void bindSessions(py::module_& module) {
  Class type(module, "Session", R"(
A robot, simulated, virtual or recorded, and all that can be done with it: see open_virtual,
open_simulated and open_recording. A `with` block ends it; ended, RuntimeError. Poses and positions
are in the map, metres and radians. For the thread that opened it, but for the switches.)");
  type.def("close", &SessionHandle::close,
           "close() -> None\n\nLets the robot stand, and stops all sensors.")
      .def("__enter__", [](const py::object& self) { return self; })
      .def("__exit__", [](SessionHandle& self, const py::args&) { self.close(); })
      .def(
          "look",
          [](SessionHandle& self) {
            return SnapshotView{self.use([](Session& session) {
              return std::make_shared<const session::Snapshot>(session.look());
            })};
          },
          "look() -> Snapshot\n\nAll that there is to see now.")
      .def("check", &check, "sensors"_a = py::none(),
           R"(check(sensors: Names = None) -> list[Check]

Watches each sensor in turn, by default all, for two and a half seconds and as long again after a turn
on the spot, and says whether it works. An unknown name: ValueError.)")
      .def_property_readonly(
          "title",
          [](const SessionHandle& self) {
            return self.ask([](Session& s) { return s.getTitle(); });
          },
          "str: What robot it is.")
      .def_property_readonly(
          "map",
          [](const SessionHandle& self) {
            return boost::const_pointer_cast<OccupancyMap>(
                self.ask([](Session& session) { return session.getMap(); }));
          },
          "OccupancyMap | None: None for a recorded robot.")
      .def_property_readonly("manager", &managerOf,
                             "SensorManager: Its sensors; it ends with the session.")
      .def_property_readonly(
          "broker",
          [](const SessionHandle& self) {
            return self.ask([](Session& session) { return session.getBroker(); });
          },
          "Broker | None: Behind which a virtual robot's services are.")
      .def_property_readonly(
          "radius",
          [](const SessionHandle& self) {
            return self.ask([](Session& session) { return session.getRadius(); });
          },
          "float: Of the room that the robot takes, metres.");
  bindMore(type);
  bindSwitches(type);
  bindDriving(type);
  bindFaults(type);
  bindTime(type);
  bindOpening(module);
}

}  // namespace QV::python
