#include "session/internal/pose_watch.h"

#include <utility>

#include "session/internal/number_text.h"

namespace QV::session {
namespace {

// The limit is the same as for the rays of simulated sensors.
constexpr float kOccupiedAbove = OccupancyMap::kSolidAbove;

}  // namespace

std::optional<std::string> PoseWatch::look(const Math::Pose2D& pose) {
  const auto occupancy = map.findOccupancy(Math::position2DFromPose2D(pose));
  const Place place = !occupancy                    ? Place::outside
                      : *occupancy > kOccupiedAbove ? Place::notFree
                                                    : Place::free;
  if (std::exchange(last, place) == place || place == Place::free) return std::nullopt;
  const MapShift& shift = map.getShift();
  return "warning: the pose x,y " + shortest(pose.x, shift.x) + "," + shortest(pose.y, shift.y) +
         (place == Place::outside ? " m lies outside the map"
                                  : " m is in an occupied or unknown cell");
}

}  // namespace QV::session
