#include "sensor/core/internal/health_board.h"

#include <algorithm>
#include <exception>
#include <iterator>

#include "platform/ko/internal/time_source.h"
#include "platform/ko/log.h"
#include "sensor/core/internal/sensor_watch.h"

namespace QV::sensor {
namespace {

using Time = ko::Clock::time_point;

constexpr ko::Duration kComparePeriod{600'000'000};
// Seconds: what passes at once between two comparisons counts as that at the most.
constexpr double kLongestGap = 1.0;
constexpr ko::Duration kHangs{200'000'000};
// A tick that comes later than that has missed others, or the clock has jumped.
constexpr ko::Duration kLongestTick{1'000'000'000};
constexpr ko::Duration kSettling{1'000'000'000};
constexpr ko::Duration kFreshView{400'000'000};
constexpr ko::Duration kDeviceKnown{500'000'000};
// The device manager is asked for its time for this long after it was needed.
constexpr ko::Duration kAsks{2'000'000'000};
// Trouble that comes before a fault and leads to it.
constexpr ko::Duration kLead{1'500'000'000};
constexpr char kHealthCategory[] = "Navigation.SensorHealth";

std::int64_t inNs(Time time) {
  return time.time_since_epoch().count();
}

double secondsBetween(Time from, Time to) {
  return boost::chrono::duration<double>(to - from).count();
}

std::size_t indexOf(HealthState state) {
  return static_cast<std::size_t>(state);
}

bool isUnread(const HealthFinding& finding) {
  return finding.cause == HealthCause::unread || finding.cause == HealthCause::neverRead;
}

// Health starts anew after hardware was switched off, or failed to start.
bool isByReadings(const HealthFinding& finding) {
  return finding.state > HealthState::sound &&
         (finding.state < HealthState::failing || finding.cause == HealthCause::readingThrows);
}

// None of the limits that ask for a judge can be passed before.
void tellPatience(const HealthLimits& limits, SensorWatch& watch) {
  constexpr double kLongest = 1e6;
  const double least = std::min(limits.get(HealthLimit::age).value_or(kLongest),
                                limits.get(HealthLimit::silence).value_or(kLongest));
  watch.setPatience(static_cast<std::int64_t>(std::min(least, kLongest) * 1e9));
}

}  // namespace

void HealthBoard::describe(const Sensor& sensor, const HealthNature& nature, ko::Duration period) {
  HealthNature own = nature;
  SensorWatch& watch = sensor.xGetWatch();
  own.hasRate = nature.hasRate && watch.getNature().hasRate;
  watch.setNature(own);
  sensor.xWatch(isOn && isAsked);
  const Lock lock(mutex);
  Entry& entry = entries[sensor.getName()];
  entry.sensor = &sensor;
  entry.limits = HealthLimits(period);
  // A sensor that reports changes rarely has news, so two bad readings in 20 are too many.
  if (!own.hasRate) entry.limits.set(HealthLimit::garbage, 0.05);
  glances.clear();
  tellPatience(entry.limits, watch);
}

void HealthBoard::setLimit(const std::string& sensor, HealthLimit limit,
                           std::optional<double> value) {
  const Lock lock(mutex);
  xAddNew();
  const auto found = entries.find(sensor);
  if (found == entries.end()) return;
  found->second.limits.set(limit, value);
  glances.clear();
  tellPatience(found->second.limits, found->second.sensor->xGetWatch());
}

std::optional<double> HealthBoard::getLimit(const std::string& sensor, HealthLimit limit) {
  const Lock lock(mutex);
  xAddNew();
  const auto found = entries.find(sensor);
  return found == entries.end() ? std::nullopt : found->second.limits.get(limit);
}

void HealthBoard::setCallback(Callback newCallback) {
  if (newCallback) beAsked();
  const Lock lock(mutex);
  // The old callback is destroyed after the lock, because its destructor may ask for health.
  callback.swap(newCallback);
}

void HealthBoard::setOn(bool on) {
  const Lock lock(mutex);
  isOn = on;
  xWatchAll(on && isAsked);
  // Notes from before the pause are outdated.
  settledAt = ko::Clock::now() + kSettling;
}

void HealthBoard::beAsked() {
  if (isAsked.exchange(true)) return;
  const Lock lock(mutex);
  xWatchAll(isOn);
}

void HealthBoard::xWatchAll(bool on) const {
  for (const auto& [name, sensor] : sensors) {
    if (sensor) sensor->xWatch(on);
  }
}

void HealthBoard::setRefreshed(bool on) {
  const Lock lock(mutex);
  isRefreshed = on;
  judgedAt = ko::Clock::now();
  judgedByMachine = std::chrono::steady_clock::now();
}

void HealthBoard::noteDeviceTime(Time time) {
  const Time now = ko::Clock::now();
  deviceOffset = (time - now).count();
  deviceNotedAt = inNs(now);
}

void HealthBoard::noteVelocity(const Math::Pose2D& velocity) {
  motion.note(velocity, ko::Clock::now());
}

void HealthBoard::tick(ko::Duration period) {
  if (!isOn || !isAsked) return;
  const std::int64_t now = inNs(ko::detail::coarseNow());
  const std::int64_t passed = now - tickedAt;
  if (passed >= 0 && passed < period.count()) return;
  Lock lock(mutex, std::try_to_lock);
  if (!lock) return;
  tickedAt = now;
  xJudgeAll(true);
  xCallBack(lock);
}

std::optional<SensorHealth> HealthBoard::get(const std::string& sensor) {
  beAsked();
  Lock lock(mutex);
  xJudgeAll(false);
  const auto found = entries.find(sensor);
  std::optional<SensorHealth> health;
  if (found != entries.end()) health = xTell(found->second);
  xCallBack(lock);
  return health;
}

std::map<std::string, SensorHealth> HealthBoard::getAll() {
  beAsked();
  Lock lock(mutex);
  xJudgeAll(false);
  std::map<std::string, SensorHealth> all;
  for (const auto& [name, entry] : entries) all.emplace(name, xTell(entry));
  xCallBack(lock);
  return all;
}

void HealthBoard::xAddNew() {
  if (entries.size() == sensors.size()) return;
  for (const auto& [name, sensor] : sensors) {
    if (!sensor) continue;
    Entry& entry = entries[name];
    entry.sensor = sensor.get();
    if (isAsked && !sensor->watch) sensor->xWatch(isOn);
    tellPatience(entry.limits, sensor->xGetWatch());
  }
}

void HealthBoard::xListGlances() {
  if (glances.size() == entries.size()) return;
  glances.clear();
  for (auto& [name, entry] : entries) {
    const SensorWatch& watch = entry.sensor->xGetWatch();
    const bool compares =
        watch.getNature().showsMotion && entry.limits.get(HealthLimit::disagreement).has_value();
    glances.push_back({&watch, &name, &entry, compares});
  }
}

HealthMoment HealthBoard::xMoment() const {
  HealthMoment moment;
  moment.now = inNs(ko::Clock::now());
  moment.isRefreshed = isRefreshed;
  const bool isLately = deviceNotedAt != 0 && moment.now - deviceNotedAt < kDeviceKnown.count();
  moment.isDeviceKnown = isLately || !isRefreshed;
  moment.deviceOffset = isLately ? deviceOffset.load() : 0;
  moment.isMoving = motion.getState().isMoving;
  return moment;
}

const std::string* HealthBoard::xFindHanging(std::int64_t now) const {
  for (const auto& [name, entry] : entries) {
    const std::int64_t since = entry.sensor->xGetWatch().getReadingSince();
    if (since != 0 && now - since > kHangs.count()) return &name;
  }
  return nullptr;
}

void HealthBoard::xJudgeAll(bool isTick) {
  xAddNew();
  xListGlances();
  const HealthMoment moment = xMoment();
  const Time now{ko::Duration(moment.now)};
  xNoteJump(now);
  const bool compares = isTick && xIsTimeToCompare(now);
  // All lie apart, and are out of the cache by now.
  for (const Glance& glance : glances) glance.watch->fetch(compares && glance.compares);
  if (compares) xCompareViews(now);
  const RobotMotion::State moved = motion.getState();
  for (Glance& glance : glances) {
    if (isTick && glance.wasSound && glance.watch->isCalm(moment.now, moment.isMoving)) continue;
    Entry& entry = *glance.entry;
    const HealthFinding finding = xJudge(entry, moment, isTick ? &moved : nullptr);
    if (finding.cause == HealthCause::old || finding.state == HealthState::starting) askedAt = now;
    xSettle(*glance.name, entry, finding, moment);
    const bool isSound =
        finding.state == HealthState::sound && entry.shown.state == HealthState::sound;
    glance.wasSound = isSound && !entry.track.contradicted;
  }
  asksDevice = now - askedAt < kAsks;
}

HealthFinding HealthBoard::xJudge(Entry& entry, const HealthMoment& moment,
                                  const RobotMotion::State* moved) const {
  const Sensor& sensor = *entry.sensor;
  const SensorWatch& watch = sensor.xGetWatch();
  // The flag is read before the notes: a started sensor has noted its start time.
  const HealthSwitches switches{sensor.isWanted,    sensor.isEnabled(), sensor.isDiagnosisSucess(),
                                sensor.isStarted(), sensor.call,        sensor.callSince,
                                sensor.leftOn,      sensor.hasThrown};
  const ReadingNotes notes = watch.getNotes();
  if (moved) entry.track.update(notes, watch.getNature().showsMotion, *moved);
  auto finding = HealthJudge(watch, notes, entry.limits, entry.track, moment).judge(switches);
  if (isUnread(finding)) finding.other = xFindHanging(moment.now);
  return finding;
}

// A jump of the clock is no time in which a sensor could have measured.
void HealthBoard::xNoteJump(Time now) {
  if (!isRefreshed) return;
  const auto machine = std::chrono::steady_clock::now();
  const ko::Duration passed = now - judgedAt;
  const std::int64_t byMachine = std::chrono::nanoseconds(machine - judgedByMachine).count();
  const bool leaps = passed > kLongestTick && byMachine < passed.count() / 2;
  const bool isBeyond = settledAt - kSettling > now;
  if (passed < ko::Duration::zero() || leaps || isBeyond) settledAt = now + kSettling;
  judgedAt = now;
  judgedByMachine = machine;
}

bool HealthBoard::xIsTimeToCompare(Time now) const {
  const ko::Duration passed = now - comparedAt;
  return passed < ko::Duration::zero() || passed >= kComparePeriod;
}

void HealthBoard::xCompareViews(Time now) {
  const RobotMotion::State moved = motion.getState();
  const bool moves = moved.turned + moved.went > comparedMotion;
  const double seconds = moves ? std::min(secondsBetween(comparedAt, now), kLongestGap) : 0.0;
  comparedMotion = moved.turned + moved.went;
  comparedAt = now;
  const double nowInSeconds = static_cast<double>(inNs(now)) * 1e-9;
  sights.clear();
  for (const Glance& glance : glances) {
    if (!glance.compares) continue;
    const PlanarView view = glance.watch->getView(inNs(now - kFreshView));
    if (!view.isEmpty()) sights.push_back({glance.name, view});
  }
  for (std::size_t i = 0; i < sights.size(); ++i) {
    for (std::size_t j = i + 1; j < sights.size(); ++j) {
      contradictions.compare(sights[i], sights[j], nowInSeconds, std::max(seconds, 0.0));
    }
  }
  for (Glance& glance : glances) xFindContradiction(glance, nowInSeconds);
}

void HealthBoard::xFindContradiction(Glance& glance, double now) const {
  const auto told = contradictions.find(*glance.name, now);
  // What nothing contradicted before either need not be touched.
  if (!told && glance.wasSound) return;
  glance.wasSound = false;
  Entry& entry = *glance.entry;
  entry.track.contradicted = told ? told->other : nullptr;
  if (!told) return;
  entry.track.contradiction = told->seconds;
  entry.track.own = told->own;
  entry.track.others = told->others;
}

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
  entry.shown = finding;
  entry.since = entry.foundAt = now;
  ++entry.times[indexOf(finding.state)];
  if (callback) changes.emplace_back(name, xTell(entry));
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

// An error long before has nothing to do with it.
std::optional<ko::log::Record> HealthBoard::xFindTrouble(const Entry& entry) const {
  if (!hasTrouble(entry.shown.cause)) return std::nullopt;
  auto trouble = entry.sensor->getLastTrouble();
  if (trouble && isByReadings(entry.shown) && trouble->timestamp < entry.since - kLead) return {};
  return trouble;
}

void HealthBoard::xCallBack(Lock& lock) {
  if (isCallingBack) return;
  isCallingBack = true;
  while (!changes.empty()) {
    const auto change = std::move(changes.front());
    changes.pop_front();
    Callback call = callback;
    lock.unlock();
    try {
      if (call) call(change.first, change.second);
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
