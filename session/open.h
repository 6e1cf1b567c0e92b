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

/** The clock of a session. */
enum class TimeSource {
  /** A simulated time of its own, which advances only with the session: runs are reproducible. Only
   * one such session may exist in a process at a time. */
  simulated,
  /** The time of ko::Clock: real, or a SimulatedTime that the caller has created. */
  clock
};

/**
 * The options of a session: a value, which is read while the session opens. The default is the
 * project's own map, an empty world, and the library's kinds of sensors.
 *
 *     QV::session::OpenOptions options;
 *     options.start = QV::Math::Pose2D(3.0f, 6.3f, 0.0f);
 *     options.world.randomPeople = 3;
 *     options.faults = {QV::robot::parseFault("FrontLaser:stuck@10-20")};
 *     const auto session = QV::session::openVirtual("porter", options);
 */
struct QV_API OpenOptions {
  TimeSource time = TimeSource::simulated;
  /** The map: one of the project's own by name, or a map of ROS map_server by path. */
  std::string mapFile = "apartment";
  /** In place of the file; it must not change while a session has it. */
  boost::shared_ptr<const OccupancyMap> map = nullptr;
  /** The file's map is held with its zero there; `start` is then in the shifted map. */
  MapShift shift = {};
  /** The start pose in the map; without one, a free pose. */
  std::optional<Math::Pose2D> start = std::nullopt;
  /** The world of a virtual robot. Its own `start` is ignored. */
  robot::WorldOptions world = {};
  /** True places a person 1.2 m ahead of a virtual robot. */
  bool somebodyAhead = false;
  std::vector<robot::Fault> faults = {};
  /** The creators of sensors, whose kinds the description may use, and of the units that measure
   * for them. */
  sensor::SensorFactory sensors = sensor::SensorFactory::standard();
  robot::UnitFactory units = robot::UnitFactory::standard();
};

/** Opens a virtual robot with the sensors of its description: one of the project's own by name
 * ("porter"), or a URDF by path. Throws std::runtime_error, with the file's name, for a bad file,
 * and UsageError for a world that can't be built. */
QV_API std::unique_ptr<Session> openVirtual(const std::string& robot,
                                            const OpenOptions& options = {});

/** Opens a robot with the simulated sensors of a kind (see SimulatedSensorManager). Throws
 * UsageError for a kind without sensors. */
QV_API std::unique_ptr<Session> openSimulated(int kind, const OpenOptions& options = {});

/** Opens a log of a lidar (CARMEN) or of sonars; the content tells which. A sonar log needs poses:
 * a file `poses` or, without it, poses.txt beside the log. The session has its own time and stands
 * at the first step. Throws std::runtime_error, with file and line, for a bad file. */
QV_API std::unique_ptr<Session> openRecording(const std::string& log,
                                              const std::optional<std::string>& poses = {});

}  // namespace QV::session
