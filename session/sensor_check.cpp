#include "session/sensor_check.h"

#include <algorithm>
#include <exception>
#include <optional>

#include "platform/ko/clock.h"
#include "sensor/core/scoped_subscription.h"
#include "session/internal/check_target.h"
#include "session/internal/number_text.h"
#include "session/internal/observation.h"
#include "session/internal/record_owner.h"
#include "session/internal/seconds.h"

namespace QV::session {
namespace {

constexpr ko::Duration kCycle{100'000'000};
constexpr ko::Duration kLateAfter{400'000'000};
constexpr int kCyclesStanding = 25;
// The time is longer than people are remembered.
constexpr int kCyclesTurned = 22;
constexpr float kTurn = 1.0f;

std::string secondsOf(ko::Duration duration) {
  return fixed(inSeconds(duration), 2) + " s";
}

std::string joined(const std::string& a, const std::string& b) {
  return a.empty() || b.empty() ? a + b : a + "; " + b;
}

Records recordsOf(const sensor::SensorManager& manager, const std::string& sensor) {
  Records records = manager.getMetricalData();
  std::erase_if(records, [&](const auto& record) { return sensorOf(record, manager) != sensor; });
  return records;
}

void observe(CheckTarget& target, const std::string& sensor, int cycles, Observation& seen) {
  for (int cycle = 0; cycle < cycles; ++cycle) {
    target.wait(kCycle);
    seen.add(recordsOf(target.getManager(), sensor));
  }
}

Observation observe(CheckTarget& target, const std::string& sensor, const SensorNature& nature) {
  const auto starting = static_cast<int>(target.getStartingTime() / kCycle);
  Observation seen(nature, starting);
  observe(target, sensor, kCyclesStanding, seen);
  if (!target.canTurn()) return seen;
  const Records before = recordsOf(target.getManager(), sensor);
  const ko::Duration worstAge = seen.worstAge;
  target.turn(kTurn);
  observe(target, sensor, kCyclesTurned, seen);
  seen.isStuck =
      showsTurns(before, nature) && hasSamePoints(before, recordsOf(target.getManager(), sensor));
  target.turn(-kTurn);
  // People who are no longer seen grow old in their record.
  seen.worstAge = worstAge;
  return seen;
}

void judge(const Observation& seen, const SensorNature& nature, const std::string& trouble,
           const std::string& missing, CheckedSensor& checked) {
  checked.records = seen.records;
  checked.points = seen.points;
  const auto fail = [&checked](Verdict verdict, const std::string& why) {
    checked.verdict = verdict;
    checked.why = why;
  };
  if (!seen.nonsense.empty()) return fail(Verdict::badData, joined(seen.nonsense, trouble));
  if (seen.longestGap > 0 && !nature.mayBeSilent()) {
    const std::string gap = seen.records == 0 ? "" : "for " + secondsOf(seen.longestGap * kCycle);
    return fail(Verdict::noRecord, joined(gap, joined(trouble, missing)));
  }
  if (seen.worstAge > kLateAfter) {
    return fail(Verdict::late, joined(secondsOf(seen.worstAge) + " old", trouble));
  }
  if (seen.isStuck) return fail(Verdict::frozen, "its points stay the same when the robot turns");
  if (!trouble.empty()) return fail(Verdict::badData, trouble);
  if (nature.alwaysHasPoints() && seen.points == 0) {
    return fail(Verdict::badData, "its records have no points");
  }
  if (nature.looksDown() && seen.points == 0) {
    return fail(Verdict::badData, "its hole status is never valid");
  }
  checked.why = nature.mayBeSilent() ? describeTouch(seen) : seen.points == 0 ? "sees nothing" : "";
}

CheckedSensor checkOne(CheckTarget& target, const std::string& sensor) {
  auto& manager = target.getManager();
  CheckedSensor checked{sensor, manager.getSensorPtr(sensor)->getFamilyName()};
  const auto start = ko::Clock::now();
  try {
    const sensor::ScopedSubscription subscription(manager, "qvsensors check", {sensor});
    if (manager.isSensorStarted(sensor)) {
      const SensorNature nature = target.getNature(sensor);
      const Observation seen = observe(target, sensor, nature);
      // The gap before the first record is the start and does not count.
      const std::string trouble = target.findTrouble(sensor, seen.firstSeen.value_or(start));
      judge(seen, nature, trouble, target.findMissing(sensor), checked);
      if (const auto health = manager.getHealth(sensor)) checked.health = *health;
      return checked;
    }
    checked.why = target.findTrouble(sensor, start);
  } catch (const std::exception& exception) {
    checked.why = exception.what();
  }
  if (const auto health = manager.getHealth(sensor)) checked.health = *health;
  checked.verdict = Verdict::failedToStart;
  return checked;
}

// The manager knows nothing of a sensor that it left out without an error.
CheckedSensor checkUnbuilt(CheckTarget& target, const std::string& name,
                           const std::string& family) {
  const std::string trouble = target.findTrouble(name, ko::Clock::time_point::min());
  if (!trouble.empty()) {
    const auto health = target.getManager().getHealth(name);
    return {
        name, family, Verdict::notBuilt, trouble, 0, 0, health.value_or(sensor::SensorHealth())};
  }
  const std::string why = "its description is incomplete, or its name is taken";
  return {name,
          family,
          Verdict::notBuilt,
          why,
          0,
          0,
          {sensor::HealthState::failing, ko::Clock::now(), "it could not be built: " + why,
           "correct the description, then make a new manager", 1}};
}

std::vector<CheckedSensor> checkAll(CheckTarget& target, const CheckOptions& options) {
  std::vector<CheckedSensor> checked;
  const bool isAll = options.sensors.empty();
  auto sensors = isAll ? target.getManager().getSensorList() : options.sensors;
  for (const auto& [name, family] : target.findUnbuilt()) {
    if (!isAll && !sensors.contains(name)) continue;
    checked.push_back(checkUnbuilt(target, name, family));
    if (!target.getManager().isSensor(name)) sensors.erase(name);
  }
  std::size_t done = 0;
  for (const std::string& name : sensors) {
    checked.push_back(checkOne(target, name));
    const double share = static_cast<double>(++done) / static_cast<double>(sensors.size());
    if (options.goesOn && !options.goesOn(share)) break;
  }
  return checked;
}

}  // namespace

const char* getName(Verdict verdict) {
  static const char* const names[] = {
      "works", "no record", "late", "frozen", "bad data", "failed to start", "could not be built"};
  return names[static_cast<int>(verdict)];
}

std::vector<CheckedSensor> checkSensors(sensor::SensorManager& manager,
                                        const CheckOptions& options) {
  ManagerTarget target(manager, options.kinds);
  return checkAll(target, options);
}

std::vector<CheckedSensor> checkSensors(Session& session, const CheckOptions& options) {
  SessionTarget target(session);
  return checkAll(target, options);
}

}  // namespace QV::session
