#pragma once

#include <chrono>
#include <optional>

namespace QV::app {

/** Keeps a session to the machine's clock; without a speed it goes as fast as it can. */
class MachinePace {
 public:
  /** Seconds of the session for one of the machine's. */
  explicit MachinePace(std::optional<double> speed) : speed(speed) {}

  /** Waits until `seconds` of the session are due, which count from the first call on. */
  void await(double seconds);

  /** Returns the machine's time that this stretch of the session takes; none without a speed. */
  std::chrono::duration<double> scale(double seconds) const;

 private:
  using Clock = std::chrono::steady_clock;

  const std::optional<double> speed;
  std::optional<double> firstSeconds;
  Clock::time_point start;
};

/** UsageError for times or a speed that are none. */
void checkTimes(double from, std::optional<double> to, std::optional<double> speed);

}  // namespace QV::app
