#include "outlets/web/internal/page_points.h"

#include <cmath>
#include <set>
#include <utility>

#include "outlets/internal/seen_places.h"

namespace QV::outlets {
namespace {

constexpr std::size_t kMostSampled = 8 * kMostPagePoints;
// Metres: points of a dense cloud that are nearer to each other look like one.
constexpr float kCell = 0.05f;

// Keeps one point for each cell.
std::vector<Math::Position2D> thinned(const std::vector<Math::Position2D>& points) {
  if (points.size() <= kMostPagePoints) return points;
  const std::size_t step = points.size() / kMostSampled + 1;
  std::set<std::pair<int, int>> taken;
  std::vector<Math::Position2D> kept;
  for (std::size_t i = 0; i < points.size() && kept.size() < kMostPagePoints; i += step) {
    const auto& point = points[i];
    const std::pair cell(static_cast<int>(std::lround(point.x / kCell)),
                         static_cast<int>(std::lround(point.y / kCell)));
    if (taken.insert(cell).second) kept.push_back(point);
  }
  return kept;
}

}  // namespace

std::vector<Math::Position2D> pagePointsOf(const session::Marks& marks) {
  std::vector<Math::Position2D> points;
  points.reserve(marks.hits.size());
  for (const auto& hit : marks.hits) points.emplace_back(hit.x, hit.y);
  for (const auto& echo : marks.echoes) {
    for (const auto& place : positionsOn(echo, kArcPoints)) points.emplace_back(place.x, place.y);
  }
  return thinned(points);
}

}  // namespace QV::outlets
