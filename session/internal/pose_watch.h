#pragma once

#include <optional>
#include <string>

#include "platform/api.h"
#include "platform/math/pose2d.h"
#include "platform/navigation/occupancy_map.h"

namespace QV::session {

/** Watches a robot's pose, and warns when it leaves the map or enters a cell that is not free. */
class QV_API PoseWatch {
 public:
  /** The map must outlive the watch. */
  explicit PoseWatch(const OccupancyMap& map) : map(map) {}

  /** Returns a warning if `pose` is such a place and the last pose was not of that sort. */
  std::optional<std::string> look(const Math::Pose2D& pose);

 private:
  enum class Place { free, notFree, outside };

  const OccupancyMap& map;
  Place last = Place::free;
};

}  // namespace QV::session
