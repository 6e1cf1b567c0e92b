#pragma once

#include <cstddef>
#include <vector>

#include "platform/api.h"
#include "platform/math/position.h"

namespace QV::sensor {

/**
 * Unused lists of points, kept for their memory: fresh memory costs more than the points written
 * into it. Use it on one thread at a time.
 */
class QV_API SparePoints {
 public:
  using Points = std::vector<Math::Position3D>;

  /** `count` points of any value: the smallest spare with room for them, or memory of their own. */
  Points take(std::size_t count);

  void give(Points&& points);

  /** Forgets the oldest until there is room for at most so many points in all. */
  void trim(std::size_t most);

 private:
  // The spare lists, oldest first.
  std::vector<Points> spares;
};

}  // namespace QV::sensor
