#include "sensor/core/sensor_health.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>

#include "platform/model/internal/number_text.h"

namespace QV::sensor {
namespace {

constexpr std::array<const char*, 9> kStateNames{"off",   "starting", "sound",  "suspect", "frozen",
                                                 "noisy", "late",     "silent", "failing"};
constexpr std::array<const char*, kHealthLimitCount> kLimitNames{
    "start", "silence",  "age",          "reading", "garbage",
    "turn",  "distance", "disagreement", "recovery"};

[[noreturn]] void refuse(const std::string& text, const std::string& expected) {
  throw std::invalid_argument("limit \"" + text + "\": " + expected + " expected");
}

}  // namespace

const char* getName(HealthState state) {
  return kStateNames[static_cast<std::size_t>(state)];
}

bool isFault(HealthState state) {
  return state > HealthState::sound;
}

const char* getName(HealthLimit limit) {
  return kLimitNames[static_cast<std::size_t>(limit)];
}

std::optional<HealthLimit> findHealthLimit(const std::string& name) {
  const auto found = std::ranges::find(kLimitNames, name);
  if (found == kLimitNames.end()) return std::nullopt;
  return static_cast<HealthLimit>(found - kLimitNames.begin());
}

std::string namesOfHealthLimits() {
  std::string names;
  for (const char* name : kLimitNames) names.append(names.empty() ? "" : ", ").append(name);
  return names;
}

// A sound record is at most two periods old, and what reads and dates it adds 0.15 s.
HealthLimits::HealthLimits(ko::Duration period) {
  const double seconds = boost::chrono::duration<double>(period).count();
  set(HealthLimit::start, 1.0 + 5.0 * seconds);
  set(HealthLimit::silence, 0.1 + 3.0 * seconds);
  set(HealthLimit::age, 0.1 + 3.0 * seconds);
  set(HealthLimit::reading, 1.0);
  set(HealthLimit::garbage, 0.25);
  set(HealthLimit::turn, 0.5);
  set(HealthLimit::distance, 0.5);
  set(HealthLimit::disagreement, 6.0);
  set(HealthLimit::recovery, 2.0);
}

void HealthLimits::set(HealthLimit limit, std::optional<double> value) {
  const bool isLimit = value && *value > 0.0 && std::isfinite(*value);
  values[xIndex(limit)] = isLimit ? value : std::nullopt;
}

bool HealthLimits::isBeyond(HealthLimit limit, double value) const {
  const auto most = get(limit);
  return most && value > *most;
}

HealthRule parseHealthRule(const std::string& text) {
  HealthRule rule;
  const std::size_t equals = text.rfind('=');
  if (equals == std::string::npos) refuse(text, "[NAME:]LIMIT=VALUE or [NAME:]LIMIT=off");
  std::string limit = text.substr(0, equals);
  const std::size_t colon = limit.rfind(':');
  if (colon != std::string::npos) {
    rule.name = limit.substr(0, colon);
    limit = limit.substr(colon + 1);
  }
  const auto found = findHealthLimit(limit);
  if (!found) refuse(text, "one of " + namesOfHealthLimits());
  rule.limit = *found;
  const std::string value = text.substr(equals + 1);
  if (value == "off") return rule;
  rule.value = Model::toNumber(value);
  if (!rule.value || !(*rule.value > 0.0)) refuse(text, "a number above 0, or off,");
  return rule;
}

}  // namespace QV::sensor
