#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "ros2/recording/session_replay.h"
#include "session/session.h"

namespace QV::app {

/** A recording or a log that is played step by step, whichever it is. */
class PlayedSession {
 public:
  /** Opens a recording. Throws std::runtime_error with the file's name if it is none. */
  PlayedSession(const std::string& path, const std::optional<std::string>& poses,
                const sensor::SensorFactory& sensors);

  session::Session& getSession() const;
  session::Snapshot look() const;

  /** Subscribes to the sensors that were not subscribed to in the recording. False if there is no
   * first step. */
  bool begin();
  /** False at the end. */
  bool step();

  /** The seconds since its start. */
  double getSeconds() const;
  double getShareDone() const;

  /** Compares the records with the recorded ones. Throws UsageError for a log, which has none. */
  std::optional<ros2::RecordDifference> compare() const;
  /** Looks that were recorded and have not come up so far, as far as that is known. */
  std::uint64_t countMissing() const;
  /** True if something of it could not be read. */
  bool isDamaged() const;
  /** Prints on standard error which parts could not be read. */
  void warnOfDamage() const;

 private:
  std::unique_ptr<ros2::SessionReplay> recording;
  std::unique_ptr<session::Session> log;
  std::uint64_t steps = 0;
  bool hasEnded = false;
};

}  // namespace QV::app
