#include "apps/replay/machine_pace.h"

#include <algorithm>
#include <cmath>
#include <string>
#include <thread>

#include "apps/interrupt.h"
#include "session/internal/number_text.h"
#include "session/usage_error.h"

namespace QV::app {
namespace {

void expect(bool isSo, const std::string& what, double given) {
  if (isSo) return;
  throw session::UsageError(what + " expected, " + session::shortest(given) + " given");
}

}  // namespace

void MachinePace::await(double seconds) {
  if (!speed) return;
  if (!firstSeconds) {
    firstSeconds = seconds;
    start = Clock::now();
  }
  const auto due = scale(seconds - *firstSeconds);
  const auto end = start + std::chrono::duration_cast<Clock::duration>(due);
  // The wait is split, so that an interruption ends it within 50 ms.
  for (auto now = Clock::now(); now < end && !isInterrupted(); now = Clock::now())
    std::this_thread::sleep_for(
        std::min<Clock::duration>(end - now, std::chrono::milliseconds(50)));
}

std::chrono::duration<double> MachinePace::scale(double seconds) const {
  return std::chrono::duration<double>(speed ? seconds / *speed : 0.0);
}

void checkTimes(double from, std::optional<double> to, std::optional<double> speed) {
  expect(from >= 0.0 && std::isfinite(from), "--from: seconds from 0 on", from);
  if (to) expect(*to >= from && std::isfinite(*to), "--to: seconds from --from on", *to);
  if (speed) expect(*speed > 0.0 && std::isfinite(*speed), "--speed: a number above 0", *speed);
}

}  // namespace QV::app
