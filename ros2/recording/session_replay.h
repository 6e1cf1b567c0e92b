#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "ros2/bag/bag_reader.h"
#include "sensor/real/sensor_factory.h"
#include "session/session.h"

namespace QV::ros2 {

class BagRobot;

/** The first difference between replayed and recorded records. */
struct QV_API RecordDifference {
  std::string sensor;
  ko::Clock::time_point time;
  /** The field: "points[3].x", "timestamp", ... */
  std::string field;
  std::string recorded;
  std::string played;

  /** Returns all fields in one line. */
  std::string toText() const;
};

/**
 * Plays a recording in simulated time; only one can exist in a process. A recording of
 * SessionRecorder: its inputs go into a robot's modules again and the library makes the records
 * anew. A recording of another robot (MCAP, or rosbag2's folder or SQLite file): its LaserScan,
 * Range, depth Image, PointCloud2, odometry and tf go to sensors that are derived from the topics.
 * - Frames, units: those of the records; times count from the recording's start.
 * - Lifetime: not copyable; it owns its session. The constructor plays no step.
 * - Threads: for the thread that made it.
 *
 *     const QV::ros2::SessionReplay replay("run.mcap");
 *     while (replay.getSession().step())
 *       if (const auto difference = replay.compare()) std::cout << difference->toText() << '\n';
 */
class QV_API SessionReplay {
 public:
  /** The first step of opening: reads what may take seconds, on any thread. Throws as the
   * constructor from a path does. */
  class QV_API Preparation {
   public:
    explicit Preparation(const std::string& path,
                         const sensor::SensorFactory& sensors = sensor::SensorFactory::standard());

    Preparation(Preparation&&) = default;
    Preparation& operator=(Preparation&&) = default;

   private:
    friend class SessionReplay;
    bool isOwnSession;
    std::function<std::unique_ptr<session::Session>()> open;
  };
  /** The second step, on the session's thread: quick. Consumes the preparation; reusing it throws
   * std::bad_function_call. */
  explicit SessionReplay(Preparation&& preparation);
  /** Opens a recording. Throws std::runtime_error with the file and the expectation if it can't be
   * played. `sensors` makes the sensors of a recorded robot. */
  explicit SessionReplay(const std::string& path,
                         const sensor::SensorFactory& sensors = sensor::SensorFactory::standard());
  ~SessionReplay();
  SessionReplay(const SessionReplay&) = delete;
  SessionReplay& operator=(const SessionReplay&) = delete;

  session::Session& getSession() const { return *session; }

  /** Subscribes to all sensors of another robot's recording. Call it once, before the first
   * step. */
  void begin();

  /** True if SessionRecorder made this recording. */
  bool isOwn() const { return isOwnSession; }

  /** Returns a snapshot after the last step; for another robot's recording, with the records of
   * that step. */
  session::Snapshot look() const;

  /** Compares the records with the recorded snapshot of the last step; std::nullopt if they are
   * equal, bit for bit, and also if that step has no recorded snapshot: see getLookCount(). */
  std::optional<RecordDifference> compare() const;

  /** Returns the time since the recording began. */
  ko::Duration getTime() const;
  ko::Duration getLength() const;
  /** Returns the number of recorded snapshots; std::nullopt if a damaged recording does not show
   * it. Another robot's recording has none. */
  std::optional<std::uint64_t> getLookCount() const;
  /** Returns how many snapshots were skipped so far because of unreadable records. */
  std::uint64_t countLeftOut() const;
  /** The damage of the recording that was met so far. */
  const BagDamage& getDamage() const;

 private:
  BagRobot& xGetRobot() const;

  const bool isOwnSession;
  std::unique_ptr<session::Session> session;
};

/** True if the file's content is a recording. For a damaged file, its extension decides. */
QV_API bool isRecording(const std::string& path);

}  // namespace QV::ros2
