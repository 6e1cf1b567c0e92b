#include "sensor/core/internal/health_judge.h"

#include <algorithm>
#include <bit>

namespace QV::sensor {
namespace {

using enum HealthState;
using Cause = HealthCause;

constexpr double kSecondsPerNs = 1e-9;

HealthFinding found(HealthState state, Cause cause, double figure = 0.0) {
  return {.state = state, .cause = cause, .figure = figure};
}

}  // namespace

double HealthJudge::xSince(std::int64_t time) const {
  return static_cast<double>(moment.now - time) * kSecondsPerNs;
}

// A device manager whose clock runs wrong dates its records alike: neither clock alone makes one
// late.
double HealthJudge::xAgeAt(std::int64_t time) const {
  const std::int64_t offset = std::min<std::int64_t>(moment.deviceOffset, 0);
  return static_cast<double>(time - notes.last.stamp + offset) * kSecondsPerNs;
}

double HealthJudge::xAge() const {
  // Without a refresh, missing reads do not make a record old.
  if (!watch.getNature().hasRate) return xAgeAt(notes.stampedAt);
  return xAgeAt(moment.isRefreshed ? moment.now : notes.last.readAt);
}

HealthFinding HealthJudge::xBeyond(HealthState state, Cause cause, HealthLimit limit,
                                   double figure) const {
  if (!limits.isBeyond(limit, figure)) return found(sound, Cause::fresh);
  HealthFinding finding = found(state, cause, figure);
  finding.limit = *limits.get(limit);
  return finding;
}

HealthFinding HealthJudge::judge(const HealthSwitches& switches) const {
  if (const std::int64_t since = watch.getReadingSince()) {
    const auto hangs = xBeyond(silent, Cause::readingHangs, HealthLimit::reading, xSince(since));
    if (hangs.state == silent) return hangs;
  }
  if (switches.call != HardwareCall::none) return xJudgeCall(switches);
  if (switches.isLeftOn) return found(failing, Cause::leftOn);
  if (!switches.isDiagnosisGood) return found(failing, Cause::badDiagnosis);
  if (!switches.isEnabled) return found(off, Cause::disabled);
  if (!switches.isWanted) return found(off, Cause::unwanted);
  if (switches.isStarted) return xJudgeStarted();
  return switches.hasThrown ? found(failing, Cause::startThrew)
                            : found(starting, Cause::startGoesOn);
}

HealthFinding HealthJudge::xJudgeCall(const HealthSwitches& switches) const {
  const double taken = xSince(switches.callSince);
  const bool starts = switches.call == HardwareCall::starting;
  const auto hangs = starts ? xBeyond(silent, Cause::startHangs, HealthLimit::start, taken)
                            : xBeyond(failing, Cause::stopHangs, HealthLimit::start, taken);
  if (isFault(hangs.state)) return hangs;
  return starts ? found(starting, Cause::startGoesOn, taken) : found(off, Cause::unwanted);
}

HealthFinding HealthJudge::xJudgeStarted() const {
  if (!watch.isOn()) return xJudgeUnwatched();
  if (notes.failures > 0) return found(failing, Cause::readingThrows);
  // A sensor whose reading hangs is reported for that alone.
  if (moment.isRefreshed && watch.getReadingSince() == 0) {
    const auto unread = xJudgeUnread();
    if (unread.state != sound) return unread;
  }
  const auto silence = xJudgeSilence();
  if (silence.state != sound) return silence;
  if (silence.cause != Cause::excused) return xJudgeRecords();
  const auto noise = xJudgeNoise();
  return noise.state == sound ? silence : noise;
}

// awaitRecords also waits for the first record of a sensor whose health is off.
HealthFinding HealthJudge::xJudgeUnwatched() const {
  const bool isExcused = notes.last.readAt != 0 && xMayBeSilent();
  if (!watch.getNature().hasRate || isExcused || xHasFresh()) return found(sound, Cause::unwatched);
  return found(starting, Cause::awaitsFirst, xSince(notes.startedAt));
}

HealthFinding HealthJudge::xJudgeUnread() const {
  if (notes.last.readAt != 0)
    return xBeyond(late, Cause::unread, HealthLimit::silence, xSince(notes.last.readAt));
  const double waited = xSince(notes.startedAt);
  const auto finding = xBeyond(silent, Cause::neverRead, HealthLimit::start, waited);
  return finding.state == sound ? found(starting, Cause::awaitsFirst, waited) : finding;
}

bool HealthJudge::xMayBeSilent() const {
  const HealthNature& nature = watch.getNature();
  return notes.excuse || !nature.hasRate || nature.silence == Model::Silence::always ||
         (nature.silence == Model::Silence::whileMoving && moment.isMoving);
}

// A record of the sensor's former run is old, and stays as it is.
bool HealthJudge::xHasFresh() const {
  if (notes.getRecordAt() == 0) return false;
  return notes.stamps > 1 || !limits.isBeyond(HealthLimit::age, xAgeAt(notes.stampedAt));
}

HealthFinding HealthJudge::xJudgeSilence() const {
  if (xMayBeSilent() && notes.isEmpty) {
    HealthFinding finding = found(sound, Cause::excused);
    finding.excuse = notes.excuse                ? notes.excuse
                     : watch.getNature().hasRate ? "the robot moves"
                                                 : "it has nothing to report";
    finding.isMeasured = notes.excuse ? notes.isExcuseMeasured : !watch.getNature().hasRate;
    return finding;
  }
  if (!xHasFresh() && watch.getNature().hasRate) {
    // Without a refresh, missing reads do not make a sensor silent.
    const std::int64_t until = moment.isRefreshed ? moment.now : notes.last.readAt;
    const double waited =
        static_cast<double>(std::max(until - notes.startedAt, std::int64_t{0})) * kSecondsPerNs;
    const auto finding = xBeyond(silent, Cause::noFirst, HealthLimit::start, waited);
    return finding.state == silent ? finding : found(starting, Cause::awaitsFirst, waited);
  }
  // Missing reads make no sensor silent, nor does a slow reading.
  const bool isAsked = moment.isRefreshed && watch.getReadingSince() == 0;
  const std::int64_t asked = isAsked ? moment.now : notes.last.readAt;
  auto finding = xBeyond(silent, Cause::noRecord, HealthLimit::silence,
                         static_cast<double>(asked - notes.getAnsweredAt()) * kSecondsPerNs);
  finding.goodUntil = notes.getRecordAt();
  return finding;
}

HealthFinding HealthJudge::xJudgeNoise() const {
  const bool isZone = watch.getNature().points == Model::PointMeaning::zone;
  const int odd = std::popcount(isZone ? notes.changed : notes.garbage);
  auto noise = xBeyond(noisy, isZone ? Cause::flickers : Cause::garbage, HealthLimit::garbage,
                       static_cast<double>(odd) / SensorWatch::kWindow);
  noise.figure *= SensorWatch::kWindow;
  noise.limit *= SensorWatch::kWindow;
  return noise;
}

HealthFinding HealthJudge::xJudgeRecords() const {
  auto old = xBeyond(late, Cause::old, HealthLimit::age, notes.isEmpty ? 0.0 : xAge());
  old.goodUntil = notes.stampedAt;
  if (old.state != sound) return old;
  const auto noise = xJudgeNoise();
  if (noise.state != sound) return noise;
  const auto turned = xBeyond(frozen, Cause::turnsUnseen, HealthLimit::turn, track.turned);
  if (turned.state != sound) return turned;
  const auto went = xBeyond(frozen, Cause::goesUnseen, HealthLimit::distance, track.went);
  if (went.state != sound || !track.contradicted) return went;
  auto contradiction =
      xBeyond(suspect, Cause::contradicts, HealthLimit::disagreement, track.contradiction);
  contradiction.other = track.contradicted;
  contradiction.own = track.own;
  contradiction.others = track.others;
  return contradiction;
}

}  // namespace QV::sensor
