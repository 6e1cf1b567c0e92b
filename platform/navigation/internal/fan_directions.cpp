#include "platform/navigation/internal/fan_directions.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <numbers>
#include <optional>

namespace QV::detail {
namespace {

constexpr float kFullTurn = 2.0f * std::numbers::pi_v<float>;
constexpr std::size_t kKept = 8;

/** Ray `i` looks along (i - centre) * step, so that mirrored rays mirror exactly. */
struct Spread {
  double centre;
  double step;
};

Spread spreadRays(float angularRange, int count) {
  if (count == 1) return {0.0, 0.0};
  if (angularRange >= kFullTurn) return {count / 2.0, 2.0 * std::numbers::pi / count};
  return {(count - 1) / 2.0, static_cast<double>(angularRange) / (count - 1)};
}

}  // namespace

FanDirections::FanDirections(float angularRange, int rayCount)
    : angularRange(angularRange), rayCount(rayCount) {
  const Spread spread = spreadRays(angularRange, rayCount);
  for (int i = 0; i < rayCount; ++i) {
    const auto angle = static_cast<float>((i - spread.centre) * spread.step);
    angles.push_back(angle);
    cosines.push_back(std::cos(static_cast<double>(angle)));
    sines.push_back(std::sin(static_cast<double>(angle)));
  }
  cosines.resize(cosines.size() + kMore, 1.0);
  sines.resize(sines.size() + kMore, 0.0);
}

const FanDirections& findFanDirections(float angularRange, int rayCount) {
  static thread_local std::array<std::optional<FanDirections>, kKept> kept;
  static thread_local std::size_t oldest = 0;
  for (const auto& fan : kept) {
    if (!fan) break;
    if (fan->rayCount == rayCount && fan->angularRange == angularRange) return *fan;
  }
  std::optional<FanDirections>& place = kept[oldest];
  oldest = (oldest + 1) % kKept;
  return place.emplace(angularRange, rayCount);
}

}  // namespace QV::detail
