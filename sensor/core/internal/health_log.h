#pragma once

#include <map>
#include <optional>
#include <set>
#include <string>
#include <utility>

#include "platform/api.h"
#include "platform/ko/clock.h"
#include "platform/ko/log.h"
#include "sensor/core/internal/health_finding.h"
#include "sensor/core/sensor_health.h"

namespace QV::sensor {

/** A line about a sensor's health. */
struct HealthLine {
  ko::log::Level level;
  std::string text;
};

/**
 * Decides which changes of health are worth a line of the log: bad health and its end. A sensor
 * that comes and goes gets one line a minute for each state. Two sensors that contradict each other
 * share a line, and so do all that are not read. For one thread at a time.
 */
class QV_API HealthLog {
 public:
  /** Returns the line about a sensor's change from `before` to `health`, for the cause in
   * `finding`; nothing if it deserves none. */
  std::optional<HealthLine> lineOn(const std::string& sensor, HealthState before,
                                   const HealthFinding& finding, const SensorHealth& health);

 private:
  using Key = std::pair<std::string, HealthState>;

  static Key xKeyOf(const std::string& sensor, const HealthFinding& finding);
  bool xIsDue(const Key& key, ko::Clock::time_point now);

  std::map<Key, ko::Clock::time_point> warnedAt;
  /** The sensors whose present fault has a line. */
  std::set<std::string> warned;
};

}  // namespace QV::sensor
