#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "platform/api.h"
#include "platform/ko/log.h"
#include "sensor/core/sensor_health.h"

namespace QV::sensor {

/** The cause of a sensor's state. */
enum class HealthCause {
  unwanted,
  disabled,
  unwatched,
  awaitsFirst,
  startGoesOn,
  fresh,
  excused,
  contradicts,
  turnsUnseen,
  goesUnseen,
  garbage,
  flickers,
  old,
  unread,
  neverRead,
  noRecord,
  noFirst,
  readingHangs,
  readingThrows,
  startHangs,
  stopHangs,
  startThrew,
  badDiagnosis,
  leftOn
};

/** A finding about a sensor, in figures: its text is made when somebody asks. */
struct HealthFinding {
  HealthState state = HealthState::off;
  HealthCause cause = HealthCause::unwanted;
  double figure = 0.0;
  double limit = 0.0;
  /** The range that the sensor reports, and the range of the other one, metres. */
  double own = 0.0;
  double others = 0.0;
  /** The sensor that it contradicts, or that keeps the others waiting; lasts as the manager does.
   */
  const std::string* other = nullptr;
  /** A text of static lifetime. */
  const char* excuse = nullptr;
  /** The time of the last good record, ns: an error until then is over. 0 if that can't be told. */
  std::int64_t goodUntil = 0;
  /** True if the sensor has shown that it measures. */
  bool isMeasured = true;
};

/**
 * Describes the finding in one sentence; `trouble` is the sensor's last one, if that has to do with
 * it.
 */
QV_API std::string describeFinding(const HealthFinding& finding,
                                   const std::optional<ko::log::Record>& trouble);
/** True if the sensor's last error may be the reason. */
bool hasTrouble(HealthCause cause);
/** Returns the addition to a finding of `seconds` ago that has not appeared since. */
std::string agoText(double seconds);
/** Returns the remedy. */
std::string remedyFor(HealthCause cause);

}  // namespace QV::sensor
