#include "sensor/core/sensor_health.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <stdexcept>
#include <utility>

#include "sensor/core/internal/health_rule_text.h"

namespace QV::sensor {
namespace {

constexpr double kOff = std::numeric_limits<double>::infinity();
constexpr std::array<const char*, kHealthStateCount> kStateNames{
    "off", "starting", "sound", "suspect", "frozen", "noisy", "late", "silent", "failing"};
constexpr std::array<const char*, kHealthLimitCount> kLimitNames{
    "start", "silence",  "age",          "reading", "garbage",
    "turn",  "distance", "disagreement", "recovery"};

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

// A sound record is at most two periods old; reading and dating it add 0.15 s.
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
  values[xIndex(limit)] = isLimit ? *value : kOff;
}

std::optional<double> HealthLimits::get(HealthLimit limit) const {
  const double value = values[xIndex(limit)];
  return value < kOff ? std::optional(value) : std::nullopt;
}

HealthRule parseHealthRule(const std::string& text) {
  ReadHealthRule read = readHealthRule(text);
  if (read.expected.empty()) return std::move(read.rule);
  throw std::invalid_argument("limit \"" + text + "\": " + read.expected + " expected");
}

}  // namespace QV::sensor
