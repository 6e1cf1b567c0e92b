#include "platform/middleware/qv_error.h"
#include "python/bindings/maps.h"
#include "python/bindings/replay_handle.h"
#include "ros2/recording/session_replay.h"
#include "session/internal/opening.h"
#include "session/usage_error.h"

namespace QV::python {
namespace {

using SharedHandle = std::shared_ptr<SessionHandle>;

/** Makes the options of a session from Python's words. */
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

/** Reads on another thread, which Ctrl-C leaves; the session belongs to this one. */
template <typename Prepare>
SharedHandle open(const std::string& file, bool ownTime, Prepare prepare) {
  try {
    const session::Opening make = aside(std::move(prepare));
    return std::make_shared<SessionHandle>(
        unlocked([&] { return std::shared_ptr<session::Session>(make()); }), ownTime);
  } catch (const session::UsageError&) {
    throw;
  } catch (const QVError&) {
    throw;
  } catch (const std::runtime_error& error) {
    raiseFileError(file, error);
  }
}

SharedHandle openVirtual(const py::object& robot, const py::object& map,
                         std::optional<Math::Pose2D> start, const robot::WorldOptions* world,
                         const sensor::SensorFactory* sensors, const robot::UnitFactory* units,
                         bool somebodyAhead, bool simulatedTime) {
  session::OpenOptions options = optionsFrom(map, start, simulatedTime);
  if (world) options.world = *world;
  if (sensors) options.sensors = *sensors;
  if (units) options.units = *units;
  options.somebodyAhead = somebodyAhead;
  const std::string file = pathFrom(robot);
  return open(file, simulatedTime, [=] { return session::prepareVirtual(file, options); });
}

SharedHandle openSimulated(int kind, const py::object& map, std::optional<Math::Pose2D> start,
                           bool simulatedTime) {
  const session::OpenOptions options = optionsFrom(map, start, simulatedTime);
  return open(options.mapFile, simulatedTime,
              [=] { return session::prepareSimulated(kind, options); });
}

SharedHandle openSession(const std::string& file, const sensor::SensorFactory& sensors) try {
  const auto preparation =
      aside([=] { return std::make_unique<ros2::SessionReplay::Preparation>(file, sensors); });
  const auto replay = unlocked([&] {
    auto made = std::make_shared<ros2::SessionReplay>(std::move(*preparation));
    made->begin();
    made->getSession().step();
    return made;
  });
  return std::make_shared<ReplayHandle>(replay);
} catch (const session::UsageError&) {
  throw;
} catch (const std::runtime_error& error) {
  raiseFileError(file, error);
}

SharedHandle openRecording(const py::object& log, const py::object& poses,
                           const sensor::SensorFactory* sensors) {
  const std::string file = pathFrom(log);
  if (aside([=] { return ros2::isRecording(file); }))
    return openSession(file, sensors ? *sensors : sensor::SensorFactory::standard());
  std::optional<std::string> posesFile;
  if (!poses.is_none()) posesFile = pathFrom(poses);
  return open(file, true, [=] { return session::prepareRecording(file, posesFile); });
}

}  // namespace

void bindOpening(py::module_& module) {
  module.def(
      "open_virtual", &openVirtual, "robot"_a = "porter", py::kw_only(), "map"_a = "apartment",
      "start"_a = py::none(), "world"_a = py::none(), "sensors"_a = py::none(),
      "units"_a = py::none(), "somebody_ahead"_a = false, "simulated_time"_a = true,
      R"(open_virtual(robot: PathLike = "porter", *, map: OccupancyMap | PathLike = "apartment", start: PoseLike | None = None, world: WorldOptions | None = None, sensors: SensorFactory | None = None, units: UnitFactory | None = None, somebody_ahead: bool = False, simulated_time: bool = True) -> Session

Opens a virtual robot with the sensors that its description names.

Robot and map are the library's own by name, or files (URDF, map_server) by path. `start` is a pose in
the map, by default a free one. `sensors` creates the sensors, `units` the units that measure for them.
`somebody_ahead` places a person in front of the robot. Time is simulated and the session's own; only
one such session can be open. With `simulated_time=False` the clock counts, or a SimulatedTime inside
its block. Raises FileNotFoundError for a missing file, ValueError for a malformed one, an unknown name
or an impossible world.)");
  module.def(
      "open_simulated", &openSimulated, "kind"_a, py::kw_only(), "map"_a = "apartment",
      "start"_a = py::none(), "simulated_time"_a = true,
      R"(open_simulated(kind: int, *, map: OccupancyMap | PathLike = "apartment", start: PoseLike | None = None, simulated_time: bool = True) -> Session

Opens a robot with the simulated sensors of a kind, -1, 0 or 1. Raises ValueError for another kind.)");
  module.def(
      "open_recording", &openRecording, "log"_a, "poses"_a = py::none(), py::kw_only(),
      "sensors"_a = py::none(),
      R"(open_recording(log: PathLike, poses: PathLike | None = None, *, sensors: SensorFactory | None = None) -> Session

Opens a recording at its first step; the content of `log` tells its format.

A recording as MCAP, or as rosbag2's folder or SQLite file, opens as a SessionReplay; `sensors` creates
its sensors. A log of a lidar (CARMEN) or of sonars takes its poses from `poses`, by default poses.txt
beside it. Raises FileNotFoundError for a missing file, ValueError for a malformed one; it says where.)");
}

}  // namespace QV::python
