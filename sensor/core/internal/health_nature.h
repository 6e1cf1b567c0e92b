#pragma once

#include <optional>

#include "platform/model/sensor_kind.h"

namespace QV::sensor {

/** The traits that are normal for a sensor, and so no sign of bad health. */
struct HealthNature {
  /** Nothing if the kind is not known: then points are not judged. */
  std::optional<Model::PointMeaning> points = std::nullopt;
  Model::Silence silence = Model::Silence::never;
  /** True if it measures periodically; otherwise its records may be old. */
  bool hasRate = true;
  /** True if its points change when the robot moves. */
  bool showsMotion = false;

  /** True if it matters that its points change. */
  bool asksForChanges() const { return showsMotion || points == Model::PointMeaning::zone; }
};

}  // namespace QV::sensor
