#include <algorithm>

#include "sensor/core/internal/health_board.h"
#include "sensor/core/internal/sensor_watch.h"
#include "sensor/core/internal/watch_times.h"

// The part of HealthBoard that compares what all sensors see.
namespace QV::sensor {
namespace {

using Time = ko::Clock::time_point;

constexpr ko::Duration kComparePeriod{1'000'000'000};
// As long as two contradict each other, or did lately.
constexpr ko::Duration kDoubtPeriod{600'000'000};
// Seconds: what passes at once between two comparisons counts as that at the most.
constexpr double kLongestGap = 1.0;
constexpr ko::Duration kFreshView{400'000'000};

}  // namespace

bool HealthBoard::xIsTimeToCompare(Time now) const {
  const ko::Duration passed = now - comparedAt;
  const ko::Duration period = contradictions.isEmpty() ? kComparePeriod : kDoubtPeriod;
  return passed < ko::Duration::zero() || passed >= period;
}

void HealthBoard::xCompareViews(Time now) {
  const RobotMotion::State moved = motion.getState();
  const bool moves = moved.turned + moved.went > comparedMotion;
  const double seconds = moves ? std::min(secondsBetween(comparedAt, now), kLongestGap) : 0.0;
  comparedMotion = moved.turned + moved.went;
  comparedAt = now;
  const double nowInSeconds = static_cast<double>(inNs(now)) * 1e-9;
  sights.clear();
  for (const Glance& glance : glances) {
    if (!glance.compares) continue;
    const PlanarView view = glance.watch->getView(inNs(now - kFreshView));
    if (!view.isEmpty()) sights.push_back({glance.name, view});
  }
  for (std::size_t i = 0; i < sights.size(); ++i) {
    for (std::size_t j = i + 1; j < sights.size(); ++j) {
      contradictions.compare(sights[i], sights[j], nowInSeconds, std::max(seconds, 0.0));
    }
  }
  contradictions.forget(nowInSeconds);
  for (Glance& glance : glances) xFindContradiction(glance);
}

void HealthBoard::xFindContradiction(Glance& glance) const {
  const auto told = contradictions.find(*glance.name);
  // What nothing contradicted before either need not be touched.
  if (!told && glance.wasSound) return;
  glance.wasSound = false;
  Entry& entry = *glance.entry;
  entry.track.contradicted = told ? told->other : nullptr;
  if (!told) return;
  entry.track.contradiction = told->seconds;
  entry.track.own = told->own;
  entry.track.others = told->others;
}

}  // namespace QV::sensor
