#pragma once

#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include <boost/shared_ptr.hpp>

#include "platform/api.h"
#include "platform/math/metrical_data.h"
#include "platform/math/pose2d.h"
#include "platform/math/position.h"
#include "platform/model/sensor_kind.h"
#include "platform/navigation/occupancy_map.h"
#include "sensor/core/sensor_health.h"

namespace QV::session {

/** An obstacle at a known range and unknown direction: somewhere on an arc. Metres, radians. */
struct QV_API EchoMark {
  /** The pose of the sensor in the map. */
  Math::Pose2D origin;
  /** The height of the arc above the floor. */
  float height = 0.0f;
  float range = 0.0f;
  /** The aperture of the whole arc, about the sensor's x axis. */
  float angularRange = 0.0f;
};

/** The positions of a record's points in the map, sorted by their meaning. Metres. */
struct QV_API Marks {
  /** The positions of obstacles. */
  std::vector<Math::Position3D> hits = {};
  /** The ends of beams that met nothing. */
  std::vector<Math::Position3D> misses = {};
  /** The positions of points on the floor: no obstacles. */
  std::vector<Math::Position3D> floor = {};
  std::vector<EchoMark> echoes = {};
  /** The distance from the sensor to the nearest hit or echo; a touch has no range. */
  std::optional<float> nearest = std::nullopt;
};

/** Spreads `count` positions, two or more, along the arc, from the right end to the left. */
QV_API std::vector<Math::Position3D> positionsOn(const EchoMark& echo, int count);

/** The frame that records place their sensors in: the map M, or the robot's ground frame G. */
enum class Frame { map, robot };

inline const char* getName(Frame frame) {
  return frame == Frame::map ? "map" : "robot";
}

/** The state of a sensor at one moment. Metres, radians, seconds; places are in the map. */
struct QV_API SensorState {
  std::string name;
  std::string family;
  bool started = false;
  bool enabled = true;
  bool diagnosis = true;
  std::set<std::string> subscribers = {};
  /** Measurements a second, of simulated time. */
  double rate = 0.0;
  /** The age of its oldest record; std::nullopt without a record. */
  std::optional<double> age = std::nullopt;
  /** The range of the nearest obstacle. Points at the maximum range or beyond don't count. */
  std::optional<float> nearest = std::nullopt;
  /** The message of its last error, and how long ago that was. */
  std::string trouble = {};
  double troubleAge = 0.0;
  /** The health: its state and the reason. */
  sensor::SensorHealth health = {};
  /** The sensor's pose in the map, and its field of view. */
  struct View {
    Math::Pose2D apex;
    Math::SensorFieldOfView2D fieldOfView;
  };
  std::optional<View> view = std::nullopt;
  /** The meaning of the points in its records. */
  Model::PointMeaning points = Model::PointMeaning::scan;
  /** The positions of its records' points, by the robot's pose at the time of the records. */
  Marks marks = {};
  /** The records as the manager gave them. */
  std::vector<Math::MetricalData> records = {};
};

struct QV_API TouchState {
  std::string name;
  /** The position in the map. */
  Math::Position2D position;
  /** The time since it began, seconds. */
  double since = 0.0;
};

/** The place in a recording that is played. Seconds from its start. */
struct RecordingPlace {
  double time = 0.0;
  double length = 0.0;
};

/**
 * The state of a robot and its world at one moment. Outlets show and record it.
 *
 * - Frames: positions and poses are in the map M, `velocity` is in the ground frame G. Records
 *   place their sensors in `frame`.
 * - Units: metres, radians, m/s, rad/s; durations are seconds, `time` is ko::Clock's.
 * - Special values: std::nullopt, null or an empty list for parts that the robot does not have.
 * - Lifetime, threads: a value. It shares the map, which never changes.
 *
 *     const auto session = QV::session::openVirtual("porter");
 *     const QV::session::Snapshot snapshot = session->look();
 *     std::cout << snapshot.title << " at " << snapshot.pose.x << ", " << snapshot.pose.y << '\n';
 */
struct QV_API Snapshot {
  /** The title for people: "Virtual robot porter". */
  std::string title;
  ko::Clock::time_point time;
  bool paused = false;
  double speed = 1.0;
  /** The place in a recording; std::nullopt for other sessions. */
  std::optional<RecordingPlace> recording;
  Math::Pose2D pose;
  Math::Pose2D velocity;
  std::optional<Math::Position2D> goal;
  /** The remaining corners of the planned or timed path, the next one first; empty without one. */
  std::vector<Math::Position2D> route;
  /** The sensors, by family and name. */
  std::vector<SensorState> sensors;
  /** The sensors of the description that could not be built, by name, and why. */
  std::map<std::string, sensor::SensorHealth> unbuilt;
  /** The frame that records place their sensors in. */
  Frame frame = Frame::map;
  /** The map; null for a robot that has none: a recorded one is in the frame of its log. */
  boost::shared_ptr<const OccupancyMap> map;
  std::vector<Math::Position2D> people;
  std::vector<TouchState> touches;
  /** The faults in force: the fault kind, such as "off", by sensor name. */
  std::map<std::string, std::string> faults;

  /** Where the zero of these positions lies in the coordinates of the map's file. */
  MapShift getShift() const { return map ? map->getShift() : MapShift(); }
};

/** The sensors in the order of their names. */
QV_API std::vector<SensorState> sensorsByName(const Snapshot& snapshot);

/** All records, in the order of their sensors' names. */
QV_API std::vector<Math::MetricalData> recordsOf(const Snapshot& snapshot);

}  // namespace QV::session
