#pragma once

#include <cstddef>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "platform/ko/clock.h"
#include "platform/math/metrical_data.h"
#include "platform/model/sensor_kind.h"

namespace QV::session {

using Records = std::vector<Math::MetricalData>;

/** The facts about a sensor that are known before its records are judged. */
struct SensorNature {
  Model::PointMeaning points = Model::PointMeaning::scan;
  /** Null for a simulated sensor. */
  const Model::SensorKind* kind = nullptr;

  /** True if a sound sensor may give no record while the robot stands. */
  bool mayBeSilent() const { return kind && kind->silence == Model::Silence::always; }
  /** True if each record of a sound sensor has points. */
  bool alwaysHasPoints() const { return kind && !kind->leavesOutMisses; }
  /** True if its points lie on the floor, the same all around, and no point is no floor. */
  bool looksDown() const { return points == Model::PointMeaning::floor; }
};

/** The records of a sensor, in each cycle. */
class Observation {
 public:
  /** `starting`: the cycles without a record that a sound sensor may have at first. */
  Observation(const SensorNature& nature, int starting) : nature(nature), starting(starting) {}

  void add(const Records& ownRecords);

  std::size_t records = 0;
  /** The time of the first record; nothing without a record. */
  std::optional<ko::Clock::time_point> firstSeen;
  std::size_t points = 0;
  ko::Duration worstAge{0};
  /** The number of cycles without a record; 0 if there are too few to report. */
  int longestGap = 0;
  bool isStuck = false;
  /** The description of a point that the sensor can't have measured; empty if there is none. */
  std::string nonsense;
  /** The names in the records. */
  std::set<std::string> names;

 private:
  void xAdd(const Math::MetricalData& record);

  const SensorNature nature;
  const int starting;
  int gap = 0;
};

/** True if these records of a sound sensor would change when the robot turns. */
bool showsTurns(const Records& records, const SensorNature& nature);

/** True if their points are the same, one by one. */
bool hasSamePoints(const Records& a, const Records& b);

/** Describes what a sensor that reports touches has reported. */
std::string describeTouch(const Observation& seen);

}  // namespace QV::session
