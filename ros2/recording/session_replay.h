#pragma once

#include <memory>
#include <optional>
#include <string>

#include "ros2/bag/bag_reader.h"
#include "sensor/real/sensor_factory.h"
#include "session/session.h"

namespace QV::ros2 {

class BagRobot;

/** The first difference between records that are made anew and those that were recorded. */
struct QV_API RecordDifference {
  std::string sensor;
  ko::Clock::time_point time;
  /** "points[3].x", "timestamp", ... */
  std::string field;
  std::string recorded;
  std::string played;

  /** All of it in one line. */
  std::string toText() const;
};

/**
 * Plays a recording in a time of its own, one at a time in a process. One of SessionRecorder: what
 * drivers measured and what was asked goes into a robot's modules again, and the library makes its
 * records anew. Another robot's (MCAP, or rosbag2's folder or SQLite file): LaserScan, Range, depth
 * Image, PointCloud2, odometry and tf go to the sensors that they make. Stands before the first
 * step when it is made. Not copyable.
 */
class QV_API SessionReplay {
 public:
  /**
   * Opens a recording. What can't be played: std::runtime_error that names the file and what was
   * expected. `sensors` makes those of a recorded robot.
   */
  explicit SessionReplay(const std::string& path,
                         const sensor::SensorFactory& sensors = sensor::SensorFactory::standard());
  ~SessionReplay();
  SessionReplay(const SessionReplay&) = delete;
  SessionReplay& operator=(const SessionReplay&) = delete;

  session::Session& getSession() const { return *session; }

  /** Once, before the first step: another robot's sensors, which nobody has subscribed to, are. */
  void begin();

  /** True if it is one of SessionRecorder. */
  bool isOwn() const { return isOwnSession; }

  /** Looks at what there is to see of the last step; of another robot, the records of what was
   * told in it. */
  session::Snapshot look() const;

  /** Compares: nothing if the records are now, bit for bit, what they were at the look of the
   * last step. */
  std::optional<RecordDifference> compare() const;

  /** The time since the recording began. */
  ko::Duration getTime() const;
  ko::Duration getLength() const;
  /** Returns how many looks were recorded, as far as the recording still says; another robot's
   * has none. */
  std::optional<std::uint64_t> getLookCount() const;
  /** Returns how many looks so far were passed over, as not all of their records can be read. */
  std::uint64_t countLeftOut() const;
  /** The damage of the recording that was met so far. */
  const BagDamage& getDamage() const;

 private:
  BagRobot& xGetRobot() const;

  const bool isOwnSession;
  std::unique_ptr<session::Session> session;
};

/**
 * True if a path is a recording's, by what stands there; a name says what a damaged one should be.
 */
QV_API bool isRecording(const std::string& path);

}  // namespace QV::ros2
