#pragma once

#include <array>
#include <optional>
#include <string>

#include "platform/api.h"
#include "platform/ko/clock.h"

namespace QV::sensor {

/** How a sensor is, the worst last: where two are true, the later one is told. */
enum class HealthState {
  /** Nobody wants its records. */
  off,
  /** Wanted, and without a fresh record so far. */
  starting,
  sound,
  /** It and another one that looks the same way contradict each other. One of the two is wrong. */
  suspect,
  /** Its measurements stay the same where the robot's motion should change them. */
  frozen,
  /** Too many of its measurements can't be. */
  noisy,
  /** Its records are too old. */
  late,
  /** It gives no records, and has no reason not to. */
  silent,
  /** Its hardware does not start, stop or answer, or its diagnosis is bad. */
  failing
};
constexpr std::size_t kHealthStateCount = 9;

/** "off", "starting", ... */
QV_API const char* getName(HealthState state);
/** Whether a user has to know: all but off, starting and sound. */
QV_API bool isFault(HealthState state);

/** How a sensor is at one moment. */
struct QV_API SensorHealth {
  HealthState state = HealthState::off;
  /** When this state began. */
  ko::Clock::time_point since;
  /** In one sentence with figures: "its scan is 0.62 s old, limit 0.4 s". */
  std::string reason = {};
  /** What brings it back; empty while there is nothing to bring back. */
  std::string remedy = {};
  /** How often it came into this state so far, this time included. */
  int times = 0;
};

/** What is too much. Each limit can be changed or switched off. */
enum class HealthLimit {
  /** Seconds from the start to the first fresh record, and for hardware to start or stop. */
  start,
  /** Seconds without a record, or without a reading while others are read. */
  silence,
  /** Seconds: the age of a record. */
  age,
  /** Seconds that one reading takes. */
  reading,
  /** The share of the last 20 readings that can't be, 0 to 1. */
  garbage,
  /** Radians that the robot turns while the points stay the same. */
  turn,
  /** Metres that the robot goes towards a point, or away from it, likewise. */
  distance,
  /** Seconds on the move in which two sensors contradict each other. */
  disagreement,
  /** Seconds without a fault until a sensor counts as sound again. */
  recovery
};
constexpr std::size_t kHealthLimitCount = 9;

/** "start", "silence", ... */
QV_API const char* getName(HealthLimit limit);
/** Nothing for a name that no limit has. */
QV_API std::optional<HealthLimit> findHealthLimit(const std::string& name);
/** The names of all limits, with commas. */
QV_API std::string namesOfHealthLimits();

/** The limits of one sensor; nothing for those that are switched off. */
class QV_API HealthLimits {
 public:
  /** For a sensor that measures once a period. */
  explicit HealthLimits(ko::Duration period = ko::Duration(100'000'000));

  std::optional<double> get(HealthLimit limit) const;
  /** What is not above 0, or not a number, switches it off. */
  void set(HealthLimit limit, std::optional<double> value);
  /** Whether `value` is beyond it. */
  bool isBeyond(HealthLimit limit, double value) const { return value > values[xIndex(limit)]; }

 private:
  static std::size_t xIndex(HealthLimit limit) { return static_cast<std::size_t>(limit); }

  /** Infinite where it is switched off. */
  std::array<double, kHealthLimitCount> values;
};

/** A limit for a sensor, a family or, without a name, for all. */
struct QV_API HealthRule {
  std::string name = {};
  HealthLimit limit = HealthLimit::age;
  /** Nothing: switched off. */
  std::optional<double> value = std::nullopt;
};

/**
 * Reads "FrontLaser:age=0.5", "Sonar:turn=off" or "age=0.5". Anything else throws
 * std::invalid_argument that says what was expected.
 */
QV_API HealthRule parseHealthRule(const std::string& text);

}  // namespace QV::sensor
