#pragma once

#include <optional>

#include "platform/model/sensor_kind.h"

namespace QV::sensor {

/** The traits that are normal for a sensor, and so no fault. */
struct HealthNature {
  /** Nothing where the kind is not known: such points are not judged. */
  std::optional<Model::PointMeaning> points = std::nullopt;
  Model::Silence silence = Model::Silence::never;
  /** True if it measures again and again; else its records may grow old. */
  bool hasRate = true;
  /** True if its points change when the robot moves. */
  bool showsMotion = false;

  /** True if it matters that its points change. */
  bool asksForChanges() const { return showsMotion || points == Model::PointMeaning::zone; }
};

}  // namespace QV::sensor
