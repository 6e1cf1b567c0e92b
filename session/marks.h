#pragma once

#include <optional>
#include <vector>

#include "platform/api.h"
#include "platform/math/pose2d.h"
#include "platform/math/position.h"

namespace QV::session {

/** An obstacle at a range, in no direction known: somewhere on an arc. Metres, radians. */
struct QV_API EchoMark {
  /** The sensor in the map. */
  Math::Pose2D origin;
  /** Of the arc, above the floor. */
  float height = 0.0f;
  float range = 0.0f;
  /** Of the whole arc, about the sensor's x axis. */
  float angularRange = 0.0f;
};

/** What a record says about places of the map, by what its points mean. Metres. */
struct QV_API Marks {
  /** Where something stands. */
  std::vector<Math::Position3D> hits = {};
  /** Where beams that met nothing end. */
  std::vector<Math::Position3D> misses = {};
  /** What a camera sees of the floor: no obstacle. */
  std::vector<Math::Position3D> floor = {};
  std::vector<EchoMark> echoes = {};
  /** From the sensor to the nearest hit or echo; a touch has no range. */
  std::optional<float> nearest = std::nullopt;
};

/** `count` positions, two or more, along the arc, from the right end to the left. */
QV_API std::vector<Math::Position3D> positionsOn(const EchoMark& echo, int count);

}  // namespace QV::session
