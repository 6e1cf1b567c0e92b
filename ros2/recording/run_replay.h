#pragma once

#include <memory>
#include <optional>
#include <string>

#include "ros2/bag/bag_reader.h"
#include "session/session.h"

namespace QV::ros2 {

/** Where records that are made anew first differ from those that were recorded. */
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
 * Plays a recording of RunRecorder: what drivers measured goes into a robot's modules, and the
 * library makes its records anew. It plays in a time of its own, one at a time in a process, and
 * stands before the first look when it is made. Not copyable.
 */
class QV_API RunReplay {
 public:
  /** What is no such recording: std::runtime_error that names the file and what was expected. */
  explicit RunReplay(const std::string& path);
  ~RunReplay();
  RunReplay(const RunReplay&) = delete;
  RunReplay& operator=(const RunReplay&) = delete;

  session::Session& getSession() const { return *session; }

  /** Whether the records are now, bit for bit, what they were at the look of the last step. */
  std::optional<RecordDifference> compare() const;

  /** Since the recording began. */
  ko::Duration getTime() const;
  ko::Duration getLength() const;
  /** What of the recording could not be read so far. */
  const BagDamage& getDamage() const;

 private:
  class PlayedRobot& xGetRobot() const;

  std::unique_ptr<session::Session> session;
};

/** Whether a recording is one of RunRecorder's. What is no recording: std::runtime_error. */
QV_API bool isRunRecording(const std::string& path);

}  // namespace QV::ros2
