#pragma once

#include <array>
#include <optional>
#include <string>

#include "platform/api.h"
#include "platform/ko/clock.h"

namespace QV::sensor {

/** The state of a sensor, the worst last. If several apply, the last one is reported. */
enum class HealthState {
  /** It has no subscriber, or is disabled. */
  off,
  /** It has a subscriber, but no fresh record yet. */
  starting,
  sound,
  /** Another sensor that looks the same way contradicts it. One of the two is wrong. */
  suspect,
  /** The measurements stay the same although the robot moves. */
  frozen,
  /** Too many of the measurements are impossible. */
  noisy,
  /** The records are too old, or it is not read because another sensor's reading hangs. */
  late,
  /** No records come, without a good reason; or a reading or a start hangs. */
  silent,
  /** A reading throws, the hardware did not start or stop, a stop hangs, the diagnosis is bad, or
   * the sensor could not be built. */
  failing
};
constexpr std::size_t kHealthStateCount = 9;

/** "off", "starting", ... */
QV_API const char* getName(HealthState state);
/** True for bad health: all states except off, starting and sound. */
QV_API bool isFault(HealthState state);

/**
 * The health of a sensor at one moment. A value, to copy and keep; it changes no record and
 * switches no sensor off.
 *
 *     if (const auto health = manager.getHealth("FrontLaser"); health && isFault(health->state))
 *       std::cerr << getName(health->state) << ": " << health->reason << ". " << health->remedy;
 */
struct QV_API SensorHealth {
  HealthState state = HealthState::off;
  /** The time at which this state began (ko::Clock). */
  ko::Clock::time_point since;
  /** The reason, a sentence with figures: "its record is 0.62 s old, limit 0.40 s". */
  std::string reason = {};
  /** What brings the sensor back to sound; empty if nothing is needed. */
  std::string remedy = {};
  /** How often the sensor has entered this state, this time included. */
  int times = 0;
};

/** The limits by which health is judged. Each can be changed or switched off. */
enum class HealthLimit {
  /** Seconds from the start to the first fresh record, and for hardware to start or stop. */
  start,
  /** Seconds without a record, or without a reading while others are read. */
  silence,
  /** Seconds: the age of a record. */
  age,
  /** Seconds: the duration of one reading. */
  reading,
  /** The share of the last 20 readings that are impossible, 0 to 1. */
  garbage,
  /** Radians that the robot turns while the points stay the same. */
  turn,
  /** Metres driven towards a point, or away from it, while the points stay the same. */
  distance,
  /** Seconds in motion during which two sensors contradict each other. */
  disagreement,
  /** Seconds without a problem until the sensor is sound again. */
  recovery
};
constexpr std::size_t kHealthLimitCount = 9;

/** "start", "silence", ... */
QV_API const char* getName(HealthLimit limit);
QV_API std::optional<HealthLimit> findHealthLimit(const std::string& name);
/** All names, with commas between them. */
QV_API std::string namesOfHealthLimits();

/** The limits of one sensor; those that are switched off have no value. For one thread at a
 * time. */
class QV_API HealthLimits {
 public:
  /** Makes the default limits of a sensor that measures once per period. */
  explicit HealthLimits(ko::Duration period = ko::Duration(100'000'000));

  std::optional<double> get(HealthLimit limit) const;
  /** Sets a limit. NaN, or a value that is not above 0, switches it off. */
  void set(HealthLimit limit, std::optional<double> value);
  /** True if `value` is beyond the limit; never for one that is switched off. */
  bool isBeyond(HealthLimit limit, double value) const { return value > values[xIndex(limit)]; }

 private:
  static std::size_t xIndex(HealthLimit limit) { return static_cast<std::size_t>(limit); }

  /** Returns the limit; infinity if it is switched off. */
  std::array<double, kHealthLimitCount> values;
};

/** A change of a limit, for a sensor, a family or, without a name, for all. */
struct QV_API HealthRule {
  std::string name = {};
  HealthLimit limit = HealthLimit::age;
  /** The new value; without one the limit is switched off. */
  std::optional<double> value = std::nullopt;
};

/** Reads "FrontLaser:age=0.5", "Sonar:turn=off" or "age=0.5". Throws std::invalid_argument for any
 * other text, and says what was expected. */
QV_API HealthRule parseHealthRule(const std::string& text);

}  // namespace QV::sensor
