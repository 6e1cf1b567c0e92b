#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <boost/shared_ptr.hpp>

#include "platform/api.h"
#include "platform/math/pose2d.h"
#include "platform/navigation/occupancy_map.h"
#include "robot/world/faults/fault.h"
#include "robot/world/units/unit_factory.h"
#include "robot/world/world_options.h"
#include "sensor/real/sensor_factory.h"
#include "session/session.h"

namespace QV::session {

/** The time that a session goes by. */
enum class TimeSource {
  /** A time of its own, one at a time in a process. It stands still until the session is run,
   * and each session is the same. */
  simulated,
  /** The time of ko::Clock: the machine's, or a SimulatedTime that the caller has made. */
  clock
};

/**
 * The place of a robot, its world and its sensors. The default is the project's own map, an empty
 * world, and the library's kinds of sensors.
 *
 *     QV::session::OpenOptions options;
 *     options.start = QV::Math::Pose2D(3.0f, 6.3f, 0.0f);
 *     options.world.randomPeople = 3;
 *     options.faults = {QV::robot::parseFault("FrontLaser:stuck@10-20")};
 *     const auto session = QV::session::openVirtual("porter", options);
 */
struct QV_API OpenOptions {
  TimeSource time = TimeSource::simulated;
  /** The map: one of the project's own by its name, or a map_server map by its path. */
  std::string mapFile = "apartment";
  /** A map in place of the file. */
  boost::shared_ptr<const OccupancyMap> map = nullptr;
  /** The pose in the map; without one, a pose where there is room. */
  std::optional<Math::Pose2D> start = std::nullopt;
  /** The world of a virtual robot; its own `start` is not used, the one above is. */
  robot::WorldOptions world = {};
  /** True puts a person 1.2 m before a virtual robot, to be seen. */
  bool somebodyAhead = false;
  /** The faults of a virtual robot. */
  std::vector<robot::Fault> faults = {};
  /** The makers of its sensors, by whose kinds its description is read, and of what measures for
   * them. */
  sensor::SensorFactory sensors = sensor::SensorFactory::standard();
  robot::UnitFactory units = robot::UnitFactory::standard();
};

/**
 * Opens a virtual robot with the sensors that its description names: one of the project's own by
 * its name ("porter"), or a URDF by its path. What is wrong with a file: std::runtime_error that
 * names it; a world that can't be built: UsageError.
 */
QV_API std::unique_ptr<Session> openVirtual(const std::string& robot,
                                            const OpenOptions& options = {});

/**
 * Opens a robot with the simulated sensors of a kind (see SimulatedSensorManager); UsageError for a
 * kind that has none.
 */
QV_API std::unique_ptr<Session> openSimulated(int kind, const OpenOptions& options = {});

/**
 * Opens a log of a lidar (CARMEN) or of sonars, which its content tells. Sonars are of two files:
 * the poses are in `poses` or, without one, in poses.txt beside the log. It plays in a time of its
 * own and stands at its first step. Bad files: std::runtime_error with file and line.
 */
QV_API std::unique_ptr<Session> openRecording(const std::string& log,
                                              const std::optional<std::string>& poses = {});

}  // namespace QV::session
