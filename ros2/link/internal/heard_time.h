#pragma once

#include <chrono>
#include <cstdint>
#include <mutex>
#include <optional>

#include "platform/api.h"
#include "platform/ko/clock.h"
#include "ros2/messages/geometry_msgs.h"

namespace QV::ros2 {

/**
 * The time of a graph as ko's: that of the machine's wall clock, or of somebody's /clock. It never
 * goes back: where the other one does, or leaps by more than a minute, it goes on from where it
 * was. A /clock whose publisher is gone goes on as fast as the machine's. Thread-safe.
 */
class QV_API HeardTime {
 public:
  enum class Source { wallClock, clockTopic };
  explicit HeardTime(Source source) : source(source) {}

  /** Takes the time of /clock. */
  void setClock(const builtin_interfaces::Time& time);
  /** Takes whether somebody publishes /clock; it may stand still while somebody does. */
  void setPublished(bool on);
  /** True if there is a time. */
  bool hasBegun() const;
  /** Makes the present moment count as `time` of ko's clock from here on. */
  void begin(ko::Clock::time_point time);

  ko::Clock::time_point now();
  /** The same as others write it. */
  builtin_interfaces::Time getStamp();
  /**
   * Dates a stamp in ko's time, never later than that is. Nobody's stamp, 0, is now; one that is
   * off by more than ten seconds, or a second ahead, throws std::runtime_error.
   */
  ko::Clock::time_point date(const builtin_interfaces::Time& stamp);

 private:
  std::int64_t xRead() const;

  const Source source;
  mutable std::mutex mutex;
  std::optional<std::int64_t> clock;
  bool isPublished = false;
  /** The machine's time at which `clock` was so late and nobody published it. */
  std::optional<std::chrono::steady_clock::time_point> left;
  /** The nanoseconds that ko's time is less than that of the graph. */
  std::int64_t offset = 0;
  ko::Clock::time_point last;
};

}  // namespace QV::ros2
