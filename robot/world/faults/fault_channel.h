#pragma once

#include <deque>
#include <functional>
#include <optional>
#include <utility>

#include "robot/world/faults/fault.h"

namespace QV::robot {

/** Finds the fault of a sensor at a time; nothing while it is sound. */
using FaultFinder = std::function<std::optional<FaultKind>(ko::Clock::time_point)>;

/** The share that is left of a range that a sensor tells wrong. */
constexpr float kFalseShare = 0.6f;

/**
 * The output of a sensor that can have faults. Call it for each measurement. For one thread at a
 * time.
 */
template <typename T>
class FaultChannel {
 public:
  /** The time between two measurements of a slow sensor. */
  static constexpr ko::Duration kSlowPeriod{500'000'000};
  /** The age of delayed measurements. */
  static constexpr ko::Duration kDelay{500'000'000};
  /** The time for which an intermittent sensor is gone, and then is back. */
  static constexpr ko::Duration kGap{500'000'000};

  struct Sample {
    T value;
    /** The time that the sensor reports. */
    ko::Clock::time_point time;
  };

  /** Changes a measurement into garbage, or into a wrong but plausible one. */
  using Distortion = std::function<T(const T&)>;

  FaultChannel(FaultFinder faults, Distortion garbage, Distortion wrong)
      : faults(std::move(faults)), garbage(std::move(garbage)), wrong(std::move(wrong)) {}

  /** Returns nothing while the sensor is gone; otherwise its newest sample, which may be the last
   * one again. */
  std::optional<Sample> pass(const T& measured, ko::Clock::time_point now) {
    const Sample fresh{measured, now};
    const auto kind = faults(now);
    if (kind != FaultKind::delayed) underWay.clear();
    if (!kind) return last = fresh;
    switch (*kind) {
      case FaultKind::off:
        return std::nullopt;
      case FaultKind::stuck:
        return last = Sample{last ? last->value : measured, now};
      case FaultKind::garbage:
        return Sample{garbage(measured), now};
      case FaultKind::wrong:
        return Sample{wrong(measured), now};
      case FaultKind::slow:
        return xIsOld(now) ? last = fresh : last;
      case FaultKind::delayed:
        return xDelay(fresh);
      case FaultKind::intermittent:
        break;
    }
    if (now.time_since_epoch() / kGap % 2 == 0) return std::nullopt;
    return last = fresh;
  }

 private:
  bool xIsOld(ko::Clock::time_point now) const { return !last || now - last->time >= kSlowPeriod; }

  std::optional<Sample> xDelay(const Sample& fresh) {
    underWay.push_back(fresh);
    while (!underWay.empty() && underWay.front().time + kDelay <= fresh.time) {
      last = std::move(underWay.front());
      underWay.pop_front();
    }
    return last;
  }

  const FaultFinder faults;
  const Distortion garbage;
  const Distortion wrong;
  std::optional<Sample> last;
  std::deque<Sample> underWay;
};

}  // namespace QV::robot
