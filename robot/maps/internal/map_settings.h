#pragma once

#include <filesystem>

#include "platform/math/pose2d.h"

namespace QV::robot {

/** The settings of a map's YAML file. */
struct MapSettings {
  enum class Mode { trinary, scale, raw };

  /** The image's path as written: relative to the YAML file. */
  std::filesystem::path image;
  /** Metres per cell. */
  float resolution = 0.0f;
  Math::Pose2D origin;
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
