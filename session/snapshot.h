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

/** An obstacle at a range, in no direction known: somewhere on an arc. Metres, radians. */
struct QV_API EchoMark {
  /** The sensor in the map. */
  Math::Pose2D origin;
  /** Of the arc, above the floor. */
  float height = 0.0f;
  float range = 0.0f;
  /** Of the whole arc, about the sensor's x axis. */
  float angularRange = 0.0f;
};

/** What a record says about places of the map, by what its points mean. Metres. */
struct QV_API Marks {
  /** Where something stands. */
  std::vector<Math::Position3D> hits = {};
  /** Where beams that met nothing end. */
  std::vector<Math::Position3D> misses = {};
  /** What is seen of the floor: no obstacle. */
  std::vector<Math::Position3D> floor = {};
  std::vector<EchoMark> echoes = {};
  /** From the sensor to the nearest hit or echo; a touch has no range. */
  std::optional<float> nearest = std::nullopt;
};

/** `count` positions, two or more, along the arc, from the right end to the left. */
QV_API std::vector<Math::Position3D> positionsOn(const EchoMark& echo, int count);

/** What records place their sensors in. */
enum class Frame { map, robot };

inline const char* getName(Frame frame) {
  return frame == Frame::map ? "map" : "robot";
}

/** A sensor at one moment. Metres, radians, seconds. */
struct QV_API SensorState {
  std::string name;
  std::string family;
  bool started = false;
  bool enabled = true;
  bool diagnosis = true;
  std::set<std::string> subscribers = {};
  /** Measurements a second, of simulated time. */
  double rate = 0.0;
  /** Of its oldest record. */
  std::optional<double> age = std::nullopt;
  /** The nearest obstacle, from the sensor: nothing at the maximum range or beyond is one. */
  std::optional<float> nearest = std::nullopt;
  /** The last one's message, and how long ago it was. */
  std::string trouble = {};
  double troubleAge = 0.0;
  /** How it is and why. */
  sensor::SensorHealth health = {};
  /** Where it looks, in the map. */
  struct View {
    Math::Pose2D apex;
    Math::SensorFieldOfView2D fieldOfView;
  };
  std::optional<View> view = std::nullopt;
  /** What its points mean. */
  Model::PointMeaning points = Model::PointMeaning::scan;
  /** What its records say, placed where the robot was when they were made. */
  Marks marks = {};
  /** As it gave them. */
  std::vector<Math::MetricalData> records = {};
};

struct QV_API TouchState {
  std::string name;
  /** In the map. */
  Math::Position2D position;
  /** How long ago it began, seconds. */
  double since = 0.0;
};

/** Where a recording that is played stands. Seconds from its start. */
struct RecordingPlace {
  double time = 0.0;
  double length = 0.0;
};

/** All that there is to see of a robot and its world at one moment. */
struct QV_API Snapshot {
  /** "Virtual robot porter". */
  std::string title;
  ko::Clock::time_point time;
  bool paused = false;
  double speed = 1.0;
  /** Nothing for what is no recording. */
  std::optional<RecordingPlace> recording;
  Math::Pose2D pose;
  Math::Pose2D velocity;
  std::optional<Math::Position2D> goal;
  /** The corners of the way that is planned and not gone yet, where it begins first; or empty. */
  std::vector<Math::Position2D> route;
  /** By family and name. */
  std::vector<SensorState> sensors;
  /** What the records place their sensors in. */
  Frame frame = Frame::map;
  /** Null for a robot that has none: a recorded one is in the frame of its log. */
  boost::shared_ptr<const OccupancyMap> map;
  std::vector<Math::Position2D> people;
  std::vector<TouchState> touches;
  /** Of a virtual robot: what somebody makes sensors suffer now, such as "off", by their names. */
  std::map<std::string, std::string> faults;
};

/** The sensors in the order of their names. */
QV_API std::vector<SensorState> sensorsByName(const Snapshot& snapshot);

/** All records, in the order of their sensors' names. */
QV_API std::vector<Math::MetricalData> recordsOf(const Snapshot& snapshot);

}  // namespace QV::session
