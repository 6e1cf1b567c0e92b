#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "platform/ko/simulated_time.h"
#include "session/session.h"

namespace QV::session {

enum class Verdict { works, noRecord, stale, badData, failedToStart, notBuilt };

/** "works", "no record", ... */
const char* getName(Verdict verdict);

/** What became of one sensor. */
struct CheckedSensor {
  std::string name;
  std::string family;
  Verdict verdict = Verdict::works;
  /** Why not; or what there is to know of one that works. */
  std::string why = {};
  std::size_t records = 0;
  std::size_t points = 0;
};

/** Records older than this are stale. */
constexpr ko::Duration kStaleAfter{400'000'000};

/**
 * Subscribes to a sensor, watches its records for two and a half seconds of simulated time and for
 * as long after a turn on the spot, unsubscribes, and turns back.
 */
CheckedSensor checkSensor(Session& robot, ko::SimulatedTime& time, const std::string& sensor);

/** The sensors of the robot's description that the manager could not build. */
std::vector<CheckedSensor> findUnbuilt(const Session& robot);

}  // namespace QV::session
