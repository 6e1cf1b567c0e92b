#pragma once

#include <optional>
#include <set>
#include <string>
#include <vector>

#include "platform/math/metrical_data.h"
#include "platform/math/pose2d.h"
#include "session/frame.h"

namespace QV::session {

/** A sensor at one moment. Metres, radians, seconds. */
struct SensorState {
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
  std::optional<float> nearest = std::nullopt;
  /** The last one's message. */
  std::string trouble = {};
  /** Where it looks, in the map. */
  struct View {
    Math::Pose2D apex;
    Math::SensorFieldOfView2D fieldOfView;
  };
  std::optional<View> view = std::nullopt;
  /** In the map. */
  std::vector<Math::Position2D> points = {};
  /** As it gave them. */
  std::vector<Math::MetricalData> records = {};
};

struct TouchState {
  std::string name;
  /** In the map. */
  Math::Position2D position;
  /** How long ago it began, seconds. */
  double since = 0.0;
};

/** All that there is to see of a world at one moment. */
struct Snapshot {
  ko::Clock::time_point time;
  bool paused = false;
  double speed = 1.0;
  Math::Pose2D pose;
  Math::Pose2D velocity;
  std::optional<Math::Position2D> goal;
  /** By family and name. */
  std::vector<SensorState> sensors;
  /** What the records place their sensors in. */
  Frame frame = Frame::map;
  std::vector<Math::Position2D> people;
  std::vector<TouchState> touches;
};

}  // namespace QV::session
