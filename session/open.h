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

/** Whose time a session goes by. */
enum class TimeSource {
  /** Its own, one at a time in a process: it stands still until the session is run, and each
   * session is the same. */
  simulated,
  /** ko::Clock's: the machine's, or a SimulatedTime that the caller has made. */
  clock
};

/** Where a robot is, and in what sort of world. */
struct QV_API OpenOptions {
  TimeSource time = TimeSource::simulated;
  /** One of the project's own by its name, or a map_server map by its path. */
  std::string mapFile = "apartment";
  /** In place of the file. */
  boost::shared_ptr<const OccupancyMap> map = nullptr;
  /** In the map; without one, where there is room. */
  std::optional<Math::Pose2D> start = std::nullopt;
  /** Of a virtual robot; `start` goes by the one above. */
  robot::WorldOptions world = {};
  /** Somebody stands 1.2 m before a virtual robot, to be seen. */
  bool somebodyAhead = false;
  /** Of a virtual robot. */
  std::vector<robot::Fault> faults = {};
  /** What makes its sensors, whose kinds its description is read by, and what measures for them. */
  sensor::SensorFactory sensors = sensor::SensorFactory::standard();
  robot::UnitFactory units = robot::UnitFactory::standard();
};

/**
 * A virtual robot, with the sensors that its description names: one of the project's own by its
 * name ("porter"), or a URDF by its path. What is wrong with a file: std::runtime_error that names
 * it; a world that can't be built: UsageError.
 */
QV_API std::unique_ptr<Session> openVirtual(const std::string& robot,
                                            const OpenOptions& options = {});

/** A robot with the simulated sensors of a kind; UsageError for a kind that has none. */
QV_API std::unique_ptr<Session> openSimulated(int kind, const OpenOptions& options = {});

/**
 * A log of a lidar (CARMEN) or of sonars, which its content tells: those are of two files, the
 * poses in `poses` or, without one, in poses.txt beside the log. It plays in a time of its own and
 * stands at its first step. Bad ones: std::runtime_error with file and line.
 */
QV_API std::unique_ptr<Session> openRecording(const std::string& log,
                                              const std::optional<std::string>& poses = {});

}  // namespace QV::session
