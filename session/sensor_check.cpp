#include "session/sensor_check.h"

#include <algorithm>
#include <cmath>
#include <set>

#include "sensor/core/scoped_subscription.h"
#include "session/internal/nearest_obstacle.h"
#include "session/internal/number_text.h"
#include "session/internal/record_owner.h"

namespace QV::session {
namespace {

typedef std::vector<Math::MetricalData> Records;

constexpr ko::Duration kCycle{100'000'000};
constexpr int kCyclesStanding = 25;
// Longer than people are remembered who are no longer seen.
constexpr int kCyclesTurned = 22;
constexpr float kTurn = 1.0f;
// So many cycles without a record are a sensor that starts, or one that is a little late.
constexpr int kStarting = 5;
constexpr int kLate = 3;
// A sensor may say "nothing there" by a range beyond its maximum, within reason.
constexpr float kReason = 10.0f;
constexpr float kAngleTolerance = 0.01f;

std::string seconds(ko::Duration duration) {
  return fixed(boost::chrono::duration<double>(duration).count(), 2) + " s";
}

std::string joined(const std::string& a, const std::string& b) {
  return a.empty() || b.empty() ? a + b : a + "; " + b;
}

bool isFan(const std::string& family) {
  return family == "Laser" || family == "Shovel" || family == "Sonar";
}

// A point that the sensor can't have measured.
std::string findNonsense(const Math::MetricalData& record) {
  const auto& fov = record.fieldOfView;
  for (const auto& point : record.points) {
    const float range = Math::norm(point);
    if (!std::isfinite(range)) return "a point that is no number";
    if (fov.maxRange > 0.0f && range > kReason * fov.maxRange) {
      return "a point at " + shortest(range) + " m, beyond " + shortest(fov.maxRange) + " m";
    }
    const float angle = std::abs(std::atan2(point.y, point.x));
    if (isFan(record.familyName) && angle > 0.5f * fov.angularRange + kAngleTolerance) {
      return "a point outside of its field of view";
    }
  }
  return {};
}

/** What a sensor's records were like, cycle by cycle. */
class Observation {
 public:
  void add(const Records& ownRecords) {
    gap = ownRecords.empty() ? gap + 1 : 0;
    if (gap > (records == 0 ? kStarting : kLate)) longestGap = std::max(longestGap, gap);
    for (const auto& record : ownRecords) xAdd(record);
  }

  bool isStale() const { return worstAge > kStaleAfter; }

  std::size_t records = 0;
  std::size_t points = 0;
  ko::Duration worstAge{0};
  /** Cycles without a record; 0 if they are too few to speak of. */
  int longestGap = 0;
  bool isStuck = false;
  std::string nonsense;
  /** Names that records bear other than the sensor's. */
  std::set<std::string> names;

 private:
  void xAdd(const Math::MetricalData& record) {
    ++records;
    points += record.points.size();
    worstAge = std::max(worstAge, Math::age(record, ko::Clock::now()));
    if (nonsense.empty()) nonsense = findNonsense(record);
    names.insert(record.sensorName);
  }

  int gap = 0;
};

Records recordsOf(const sensor::SensorManager& manager, const std::string& sensor) {
  Records records = manager.getMetricalData();
  std::erase_if(records, [&](const auto& record) { return sensorOf(record, manager) != sensor; });
  return records;
}

void observe(Session& robot, ko::SimulatedTime& time, const std::string& sensor, int cycles,
             Observation& seen) {
  for (int cycle = 0; cycle < cycles; ++cycle) {
    time.advance(kCycle);
    seen.add(recordsOf(robot.getManager(), sensor));
  }
}

// The floor is the same all around, and "too near" may be, too.
bool showsTurns(const Records& records) {
  return std::any_of(records.begin(), records.end(), [](const auto& record) {
    const auto nearest = nearestObstacle(record);
    return record.familyName != "HoleLaser" && nearest && *nearest > record.fieldOfView.minRange;
  });
}

bool isSame(const Records& a, const Records& b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                    [](const auto& one, const auto& other) { return one.points == other.points; });
}

Observation observe(Session& robot, ko::SimulatedTime& time, const std::string& sensor) {
  Observation seen;
  observe(robot, time, sensor, kCyclesStanding, seen);
  const Records before = recordsOf(robot.getManager(), sensor);
  const ko::Duration worstAge = seen.worstAge;
  const Math::Pose2D pose = robot.getPose();
  robot.setPose({pose.x, pose.y, pose.theta + kTurn});
  observe(robot, time, sensor, kCyclesTurned, seen);
  seen.isStuck = showsTurns(before) && isSame(before, recordsOf(robot.getManager(), sensor));
  robot.setPose(pose);
  // People who are no longer seen grow old in their record.
  seen.worstAge = worstAge;
  return seen;
}

std::string describeTouch(const Observation& seen) {
  if (seen.records == 0) return "nothing touches it";
  std::string text;
  for (const std::string& name : seen.names) text += (text.empty() ? "touched: " : ", ") + name;
  return text;
}

void judge(const Observation& seen, const std::string& trouble, const std::string& missing,
           CheckedSensor& checked) {
  // A touch sensor has records while something touches it.
  const bool mayBeSilent = checked.family == "Touch";
  checked.records = seen.records;
  checked.points = seen.points;
  if (!seen.nonsense.empty()) {
    checked.verdict = Verdict::badData;
    checked.why = joined(seen.nonsense, trouble);
  } else if (seen.longestGap > 0 && !mayBeSilent) {
    checked.verdict = Verdict::noRecord;
    checked.why = joined(seen.records == 0 ? "" : "for " + seconds(seen.longestGap * kCycle),
                         joined(trouble, missing));
  } else if (seen.isStale()) {
    checked.verdict = Verdict::stale;
    checked.why = joined(seconds(seen.worstAge) + " old", trouble);
  } else if (seen.isStuck) {
    checked.verdict = Verdict::stale;
    checked.why = "its points stay the same when the robot turns";
  } else if (!trouble.empty()) {
    checked.verdict = Verdict::badData;
    checked.why = trouble;
  } else if (checked.family == "HoleLaser" && seen.points == 0) {
    checked.verdict = Verdict::badData;
    checked.why = "its status never vouches for its points";
  } else {
    checked.why = mayBeSilent ? describeTouch(seen) : seen.points == 0 ? "sees nothing" : "";
  }
}

std::string troubleSince(const Session& robot, const std::string& sensor,
                         ko::Clock::time_point start) {
  const auto line = robot.getNavigation().getLastTrouble().get(sensor);
  return line && line->timestamp >= start ? line->message : std::string();
}

}  // namespace

const char* getName(Verdict verdict) {
  static const char* const names[] = {"works",    "no record",       "stale",
                                      "bad data", "failed to start", "could not be built"};
  return names[static_cast<int>(verdict)];
}

CheckedSensor checkSensor(Session& robot, ko::SimulatedTime& time, const std::string& sensor) {
  auto& manager = robot.getManager();
  CheckedSensor checked{sensor, manager.getSensorPtr(sensor)->getFamilyName()};
  const auto start = ko::Clock::now();
  try {
    const sensor::ScopedSubscription subscription(manager, "qvsensors check", {sensor});
    if (manager.isSensorStarted(sensor)) {
      const Observation seen = observe(robot, time, sensor);
      judge(seen, troubleSince(robot, sensor, start), robot.findMissingInput(sensor), checked);
      return checked;
    }
    checked.why = troubleSince(robot, sensor, start);
  } catch (const std::exception& exception) {
    checked.why = exception.what();
  }
  checked.verdict = Verdict::failedToStart;
  return checked;
}

std::vector<CheckedSensor> findUnbuilt(const Session& robot) {
  std::vector<CheckedSensor> unbuilt;
  for (const auto& [name, family] : robot.getUnbuilt()) {
    const auto line = robot.getNavigation().getLastTrouble().get(name);
    unbuilt.push_back(
        {name, family, Verdict::notBuilt, line ? line->message : "its description is incomplete"});
  }
  return unbuilt;
}

}  // namespace QV::session
