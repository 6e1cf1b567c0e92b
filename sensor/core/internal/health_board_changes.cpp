#include <exception>
#include <utility>

#include "platform/ko/log.h"
#include "sensor/core/internal/health_board.h"
#include "sensor/core/internal/watch_times.h"

// The part of HealthBoard that remembers what each sensor was before, and tells of changes.
namespace QV::sensor {
namespace {

using Time = ko::Clock::time_point;

// Trouble that comes before a fault and leads to it.
constexpr ko::Duration kLead{1'500'000'000};
constexpr char kHealthCategory[] = "Navigation.SensorHealth";

std::size_t indexOf(HealthState state) {
  return static_cast<std::size_t>(state);
}

// Health starts anew after hardware was switched off, or failed to start.
bool isByReadings(const HealthFinding& finding) {
  return finding.state > HealthState::sound &&
         (finding.state < HealthState::failing || finding.cause == HealthCause::readingThrows);
}

}  // namespace

void HealthBoard::xSettle(const std::string& name, Entry& entry, const HealthFinding& finding,
                          const HealthMoment& moment) {
  const Time now{ko::Duration(moment.now)};
  if (finding.state == entry.shown.state) {
    entry.shown = finding;
    entry.foundAt = now;
    return;
  }
  if (isByReadings(finding) && now < settledAt) return;
  if (finding.cause == HealthCause::old && !moment.isDeviceKnown) return;
  if (xIsHeld(entry, finding, now)) return;
  const HealthState before = entry.shown.state;
  entry.shown = finding;
  entry.since = entry.foundAt = now;
  ++entry.times[indexOf(finding.state)];
  SensorHealth health = xTell(entry);
  auto line = log.lineOn(name, before, finding, health);
  if (callback || line) changes.push_back({name, std::move(health), std::move(line)});
}

// A sensor that comes and goes is not sound each time that it comes.
bool HealthBoard::xIsHeld(const Entry& entry, const HealthFinding& finding, Time now) const {
  if (!isByReadings(entry.shown)) return false;
  if (!finding.isMeasured) return true;
  const bool isBetter = finding.state == HealthState::sound ||
                        (isByReadings(finding) && finding.state < entry.shown.state);
  const auto recovery = entry.limits.get(HealthLimit::recovery);
  return isBetter && recovery && now >= entry.foundAt &&
         secondsBetween(entry.foundAt, now) < *recovery;
}

SensorHealth HealthBoard::xTell(const Entry& entry) const {
  SensorHealth health{entry.shown.state, entry.since,
                      describeFinding(entry.shown, xFindTrouble(entry)),
                      remedyFor(entry.shown.cause), entry.times[indexOf(entry.shown.state)]};
  const double past = secondsBetween(entry.foundAt, ko::Clock::now());
  if (isByReadings(entry.shown) && past > 0.05) health.reason += agoText(past);
  return health;
}

// An error before the last good record, or before the last call to the hardware, is over.
std::int64_t HealthBoard::xFindRelatedSince(const Entry& entry) const {
  if (entry.shown.goodUntil != 0) return entry.shown.goodUntil + 1;
  return isByReadings(entry.shown) ? inNs(entry.since - kLead) : entry.sensor->callSince.load();
}

std::optional<ko::log::Record> HealthBoard::xFindTrouble(const Entry& entry) const {
  if (!hasTrouble(entry.shown.cause)) return std::nullopt;
  auto trouble = entry.sensor->getLastTrouble();
  if (trouble && inNs(trouble->timestamp) < xFindRelatedSince(entry)) return std::nullopt;
  return trouble;
}

void HealthBoard::xCallBack(Lock& lock) {
  if (isCallingBack) return;
  isCallingBack = true;
  while (!changes.empty()) {
    const Change change = std::move(changes.front());
    changes.pop_front();
    Callback call = callback;
    lock.unlock();
    try {
      if (change.line)
        ko::log::write(change.line->level, kHealthCategory, "tick", change.line->text);
      if (call) call(change.sensor, change.health);
    } catch (const std::exception& exception) {
      ko::log::error(kHealthCategory, "onHealthChanged") << exception.what();
    } catch (...) {
      ko::log::error(kHealthCategory, "onHealthChanged") << "no standard exception";
    }
    call.clear();
    lock.lock();
  }
  isCallingBack = false;
}

}  // namespace QV::sensor
