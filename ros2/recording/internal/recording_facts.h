#pragma once

#include <map>
#include <string>

#include "platform/ko/clock.h"
#include "ros2/bag/bag_writer.h"
#include "session/internal/session_robot.h"
#include "session/session.h"

namespace QV::ros2 {

/** The facts about the robot in a recording, a metadata record of this name. */
struct RecordingFacts {
  static constexpr char kName[] = "qv";
  /** The name of the metadata record that says how a virtual robot's world was. */
  static constexpr char kWorldName[] = "qv_world";

  /** "virtual", "log", "heard", or "simulated" and the number of the kind. */
  std::string sort;
  std::string title;
  session::Frame frame = session::Frame::robot;
  /** The time at which the recording began. */
  ko::Clock::time_point start;
  float radius = 0.0f;
  session::DriverPeriods periods;
  /** The shift of its map. */
  MapShift shift;

  std::map<std::string, std::string> toValues() const;
  /** Reads the facts. Throws std::runtime_error with the expectation for a missing or invalid one.
   */
  static RecordingFacts fromValues(const std::map<std::string, std::string>& values);
};

/** Returns the facts of a session, as of now. */
RecordingFacts factsOf(session::Session& session);

/** The name of an attachment with a map's cells as floats, where the map's message rounds them. */
constexpr char kExactMap[] = "map.f32";
/** The robot's description as it was read, where viewers are given another. */
constexpr char kExactDescription[] = "robot.urdf";

BagAttachment exactMapOf(const OccupancyMap& map);
/** std::runtime_error for bytes that are no map. */
OccupancyMap mapOf(const BagAttachment& attachment);

}  // namespace QV::ros2
