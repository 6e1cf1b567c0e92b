#pragma once

#include <optional>
#include <string>
#include <vector>

#include "platform/math/metrical_data.h"
#include "platform/math/pose2d.h"
#include "session/frame.h"

namespace QV::session {

/** A record from above, in the map. Metres. */
struct PlacedRecord {
  std::string family;
  Math::SensorFieldOfView2D fieldOfView;
  /** Where the sensor is and which way it looks. */
  Math::Pose2D origin;
  /** A nearest echo: it has a range and no direction. */
  std::optional<float> echo;
  std::vector<Math::Position2D> hits;
  /** Where rays that met nothing end. */
  std::vector<Math::Position2D> misses;
};

/**
 * `robot` is where the robot was. Simulated fans, placed in the map, all look along its heading; of
 * a depth camera's points in the robot's frame those on the floor are left out.
 */
PlacedRecord place(const Math::MetricalData& record, const Math::Pose2D& robot, Frame frame);

}  // namespace QV::session
