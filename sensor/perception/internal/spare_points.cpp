#include "sensor/perception/internal/spare_points.h"

#include <iterator>
#include <utility>

namespace QV::sensor {

SparePoints::Points SparePoints::take(std::size_t count) {
  auto best = spares.end();
  for (auto spare = spares.begin(); spare != spares.end(); ++spare) {
    if (spare->capacity() < count) continue;
    if (best == spares.end() || spare->capacity() < best->capacity()) best = spare;
  }
  if (best == spares.end()) return Points(count);
  Points points = std::move(*best);
  spares.erase(best);
  points.resize(count);
  return points;
}

void SparePoints::give(Points&& points) {
  spares.push_back(std::move(points));
}

void SparePoints::trim(std::size_t most) {
  auto oldest = spares.end();
  for (std::size_t room = 0; oldest != spares.begin(); --oldest) {
    room += std::prev(oldest)->capacity();
    if (room > most) break;
  }
  spares.erase(spares.begin(), oldest);
}

}  // namespace QV::sensor
