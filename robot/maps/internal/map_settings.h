#pragma once

#include <filesystem>

#include "platform/math/pose2d.h"
#include "platform/navigation/occupancy_map.h"

namespace QV::robot {

/** The settings of a map's YAML file. */
struct MapSettings {
  enum class Mode { trinary, scale, raw };

  /** The image's path as written: relative to the YAML file. */
  std::filesystem::path image;
  /** Metres per cell. */
  float resolution = 0.0f;
  /** The origin in the file's coordinates. */
  double originX = 0.0;
  double originY = 0.0;
  /** The yaw of the origin, radians. */
  float yaw = 0.0f;

  /** The origin in the coordinates of a map that is shifted so. */
  Math::Pose2D originIn(const MapShift& shift) const {
    return {static_cast<float>(originX - shift.x), static_cast<float>(originY - shift.y), yaw};
  }

  /** White is occupied. */
  bool negate = false;
  /** Fractions of darkness. */
  double occupiedThreshold = 0.0;
  double freeThreshold = 0.0;
  Mode mode = Mode::trinary;
};

/** Throws std::runtime_error that names `path`, the line and the key. */
MapSettings readMapSettings(const std::filesystem::path& path);

}  // namespace QV::robot
