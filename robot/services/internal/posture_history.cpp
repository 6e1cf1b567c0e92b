#include "robot/services/internal/posture_history.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <iomanip>
#include <sstream>
#include <stdexcept>
#include <utility>

#include "robot/services/internal/kinematics.h"

namespace QV::robot {
namespace {

using TimePoint = ko::Clock::time_point;

constexpr ko::Duration kReach(1'000'000'000);
// A count of milliseconds that is read as a float is off by up to 64 ms after some weeks.
constexpr ko::Duration kMostAhead(100'000'000);

double inSeconds(TimePoint time) {
  return static_cast<double>(time.time_since_epoch().count()) * 1e-9;
}

[[noreturn]] void refuse(TimePoint time, TimePoint from, TimePoint to) {
  std::ostringstream text;
  text.imbue(std::locale::classic());
  text << std::fixed << std::setprecision(6) << "no posture is known at " << inSeconds(time)
       << " s, only from " << inSeconds(from) << " s to " << inSeconds(to) << " s";
  throw std::out_of_range(text.str());
}

}  // namespace

PostureHistory::PostureHistory(TimePoint start, const Posture& assumed)
    : coveredFrom(start - kReach), samples{{start, assumed}} {}

void PostureHistory::add(TimePoint time, Posture posture) {
  if (isAssumed) samples.clear();
  isAssumed = false;
  while (!samples.empty() && samples.back().time >= time) samples.pop_back();
  samples.push_back({time, std::move(posture)});
  xForgetBefore(time - kReach);
}

void PostureHistory::xForgetBefore(TimePoint time) {
  while (samples.size() > 1 && samples[1].time <= time) {
    samples.pop_front();
    coveredFrom = samples.front().time;
  }
}

Posture PostureHistory::at(TimePoint time, TimePoint now) const {
  if (time < coveredFrom || time - kMostAhead > now) refuse(time, coveredFrom, now);
  const auto after =
      std::upper_bound(samples.begin(), samples.end(), time,
                       [](TimePoint wanted, const Sample& sample) { return wanted < sample.time; });
  if (after == samples.begin()) return samples.front().posture;
  if (after == samples.end()) return samples.back().posture;
  return xBetween(*(after - 1), *after, time);
}

Posture PostureHistory::xBetween(const Sample& before, const Sample& after, TimePoint time) {
  const double ratio = static_cast<double>((time - before.time).count()) /
                       static_cast<double>((after.time - before.time).count());
  Posture result = before.posture;
  for (std::size_t i = 0; i < result.positions.size(); ++i) {
    result.positions[i] = std::lerp(result.positions[i], after.posture.positions[i], ratio);
  }
  result.rootInGround = interpolate(before.posture.rootInGround, after.posture.rootInGround, ratio);
  return result;
}

}  // namespace QV::robot
