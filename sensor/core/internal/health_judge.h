#pragma once

#include <cstdint>
#include <string>

#include "platform/api.h"
#include "platform/ko/clock.h"
#include "sensor/core/internal/hardware_call.h"
#include "sensor/core/internal/health_finding.h"
#include "sensor/core/internal/health_track.h"
#include "sensor/core/internal/sensor_watch.h"
#include "sensor/core/sensor_health.h"

namespace QV::sensor {

/** The facts that hold for all sensors at the moment when one is judged. */
struct HealthMoment {
  std::int64_t now = 0;
  /** The device manager's time minus ours, ns; 0 if nobody asked for it lately. */
  std::int64_t deviceOffset = 0;
  /** True if the device manager's time can be used: it was asked for lately, or nobody can be
   * asked. */
  bool isDeviceKnown = true;
  /** True if a refresh reads the sensors periodically; otherwise readers read them at any time. */
  bool isRefreshed = false;
  /** True while the robot moves: some sensors may then be silent. */
  bool isMoving = false;
};

/** A sensor's switches at one moment. */
struct HealthSwitches {
  bool isWanted = false;
  bool isEnabled = true;
  bool isDiagnosisGood = true;
  bool isStarted = false;
  /** The call that its hardware is busy with, and its start, ns. */
  HardwareCall call = HardwareCall::none;
  std::int64_t callSince = 0;
  /** True if the last stop failed; true if the last start threw. */
  bool isLeftOn = false;
  bool hasThrown = false;
};

/** Judges one sensor. */
class QV_API HealthJudge {
 public:
  HealthJudge(const SensorWatch& watch, const ReadingNotes& notes, const HealthLimits& limits,
              const HealthTrack& track, const HealthMoment& moment)
      : watch(watch), notes(notes), limits(limits), track(track), moment(moment) {}

  HealthFinding judge(const HealthSwitches& switches) const;

 private:
  HealthFinding xJudgeCall(const HealthSwitches& switches) const;
  HealthFinding xJudgeStarted() const;
  HealthFinding xJudgeUnwatched() const;
  HealthFinding xJudgeUnread() const;
  HealthFinding xJudgeSilence() const;
  HealthFinding xJudgeNoise() const;
  HealthFinding xJudgeRecords() const;
  double xAge() const;
  double xAgeAt(std::int64_t time) const;
  double xSince(std::int64_t time) const;
  bool xMayBeSilent() const;
  bool xHasFresh() const;
  HealthFinding xBeyond(HealthState state, HealthCause cause, HealthLimit limit,
                        double figure) const;

  const SensorWatch& watch;
  const ReadingNotes& notes;
  const HealthLimits& limits;
  const HealthTrack& track;
  const HealthMoment& moment;
};

}  // namespace QV::sensor
