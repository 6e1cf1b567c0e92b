#pragma once

#include <string>
#include <vector>

#include "platform/api.h"
#include "sensor/core/sensor_health.h"

namespace QV::sensor {

/** A limit as a text gives it, or what the text should say instead. */
struct ReadHealthRule {
  std::string text;
  HealthRule rule = {};
  /** "a number above 0, or off,"; empty if the text is good. */
  std::string expected = {};
};

/** "[NAME:]LIMIT=VALUE" or "[NAME:]LIMIT=off". */
ReadHealthRule readHealthRule(const std::string& text);

/** A description's "age=0.5 turn=off": rules without a name, with blanks between them. */
QV_API std::vector<ReadHealthRule> readDescribedLimits(const std::string& property);

}  // namespace QV::sensor
