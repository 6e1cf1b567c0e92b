#include "platform/ko/internal/time_source.h"
#include "sensor/core/internal/health_board.h"
#include "sensor/core/internal/sensor_watch.h"
#include "sensor/core/internal/watch_times.h"

// The part of HealthBoard that judges all sensors at one moment.
namespace QV::sensor {
namespace {

using Time = ko::Clock::time_point;

constexpr ko::Duration kHangs{200'000'000};
// Our clock has jumped if it gained that much on the machine's since the last tick. A simulated one
// gains 0.2 s.
constexpr ko::Duration kJump{250'000'000};
constexpr ko::Duration kDeviceKnown{500'000'000};
// The device manager is asked for its time for this long after it was needed.
constexpr ko::Duration kAsks{2'000'000'000};

bool isUnread(const HealthFinding& finding) {
  return finding.cause == HealthCause::unread || finding.cause == HealthCause::neverRead;
}

}  // namespace

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
  if (isRefreshed) xNoteJump(now);
  if (isTick) xNoteTick(now);
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

void HealthBoard::xNoteTick(Time now) {
  tickAt = now;
  tickByMachine = std::chrono::steady_clock::now();
}

// A jump of the clock is no time in which a sensor could have measured. Both clocks are compared
// since the last tick, however often somebody asks in between.
void HealthBoard::xNoteJump(Time now) {
  const auto machine = std::chrono::steady_clock::now();
  const ko::Duration byMachine{std::chrono::nanoseconds(machine - tickByMachine).count()};
  const bool goesBack = now < tickAt || now < settledAt - kSettling;
  if (goesBack || now - tickAt - byMachine > kJump) settledAt = now + kSettling;
}

}  // namespace QV::sensor
