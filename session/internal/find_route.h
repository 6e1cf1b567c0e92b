#pragma once

#include <atomic>
#include <functional>
#include <vector>

#include <boost/smart_ptr/shared_ptr.hpp>

#include "platform/api.h"
#include "platform/math/position.h"
#include "platform/navigation/occupancy_map.h"

namespace QV::session {

/** The question for a path between two positions in the map, for a robot of `radius`, metres. */
struct RouteQuestion {
  boost::shared_ptr<const OccupancyMap> map;
  Math::Position2D from;
  Math::Position2D to;
  float radius = 0.0f;
};

/**
 * Finds a short path of straight lines from `from` to `to` on which a robot of `radius` (m) keeps
 * away from what is not free, at the start as far as it does already. Empty if there is none.
 */
QV_API std::vector<Math::Position2D> findRoute(const OccupancyMap& map,
                                               const Math::Position2D& from,
                                               const Math::Position2D& to, float radius);
/** Answers a question on any thread. Returns an empty path as soon as `isGivenUp` is true. */
using RouteFinder = std::function<std::vector<Math::Position2D>(
    const RouteQuestion& question, const std::atomic<bool>& isGivenUp)>;
/** The usual RouteFinder: a short path, see findRoute(). */
std::vector<Math::Position2D> findRouteTo(const RouteQuestion& question,
                                          const std::atomic<bool>& isGivenUp);

}  // namespace QV::session
