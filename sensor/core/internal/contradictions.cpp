#include "sensor/core/internal/contradictions.h"

#include <algorithm>
#include <cmath>

namespace QV::sensor {
namespace {

// Ranges of one place, by two sensors that stand apart and measure in turn.
constexpr double kLikeness = 0.67;
constexpr double kLikeMetres = 0.15;
// Ranges that are wrong by a ratio keep that ratio.
constexpr double kOneRatio = 1.18;
constexpr double kChange = 1.3;
// This many in a row are no coincidence.
constexpr int kInARow = 3;
// A contradiction is forgotten after this long without a comparison.
constexpr double kForgotten = 10.0;

bool agrees(const PlanarView::Comparison& seen) {
  const double least = std::min(seen.own, seen.others);
  const double most = std::max(seen.own, seen.others);
  return most - least < kLikeMetres || least > kLikeness * most;
}

}  // namespace

void Contradictions::Pair::add(const PlanarView::Comparison& seen) {
  const double ratio = static_cast<double>(seen.own) / seen.others;
  const double range = std::max(seen.own, seen.others);
  leastRatio = leastRatio == 0.0 ? ratio : std::min(leastRatio, ratio);
  mostRatio = std::max(mostRatio, ratio);
  leastRange = leastRange == 0.0 ? range : std::min(leastRange, range);
  mostRange = std::max(mostRange, range);
  last = seen;
}

bool Contradictions::Pair::fits(const PlanarView::Comparison& seen) const {
  const double ratio = static_cast<double>(seen.own) / seen.others;
  return leastRatio == 0.0 || std::max(ratio, mostRatio) < kOneRatio * std::min(ratio, leastRatio);
}

bool Contradictions::Pair::counts() const {
  return mostRange > kChange * leastRange;
}

void Contradictions::compare(const Sight& a, const Sight& b, double now, double moved) {
  const auto seen = PlanarView::compare(a.view, b.view);
  if (!seen) return;
  const auto key = std::make_pair(a.sensor, b.sensor);
  if (agrees(*seen)) {
    const auto found = pairs.find(key);
    if (found != pairs.end() && ++found->second.agreements >= kInARow) pairs.erase(found);
    return;
  }
  Pair& pair = pairs[key];
  const bool isOver = now - pair.seenAt > kForgotten || now < pair.seenAt;
  if (isOver || (!pair.fits(*seen) && ++pair.deviations >= kInARow)) pair = Pair();
  if (pair.fits(*seen)) {
    pair.add(*seen);
    if (pair.seenAt > 0.0) pair.seconds += moved;
    pair.deviations = 0;
  }
  pair.agreements = 0;
  pair.seenAt = now;
}

void Contradictions::forget(double now) {
  std::erase_if(pairs, [now](const auto& entry) {
    return now - entry.second.seenAt > kForgotten || now < entry.second.seenAt;
  });
}

std::optional<Contradictions::Told> Contradictions::find(const std::string& sensor) const {
  std::optional<Told> longest;
  for (const auto& [names, pair] : pairs) {
    const bool isFirst = names.first == &sensor;
    if (!isFirst && names.second != &sensor) continue;
    if (!pair.counts()) continue;
    if (longest && longest->seconds >= pair.seconds) continue;
    longest = isFirst ? Told{names.second, pair.seconds, pair.last.own, pair.last.others}
                      : Told{names.first, pair.seconds, pair.last.others, pair.last.own};
  }
  return longest;
}

}  // namespace QV::sensor
