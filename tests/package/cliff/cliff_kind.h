#pragma once

#include "platform/model/sensor_kind.h"

constexpr int kCliffType = 40;

/** A cliff detector looks at the floor. Its one point is at the minimum range if the floor is
 * missing there, else at the maximum range. */
inline QV::Model::SensorKind cliffKind() {
  using namespace QV::Model;
  SensorKind kind = {kCliffType, "Cliff", "Cliff", PointMeaning::zone};
  kind.keys = {1, 1, 1, "range of the floor (m)", KeyContent::range};
  kind.properties = {{"minimumDetectionDistance", Quantity::metres, true, 0.0, 1.0},
                     {"maximumDetectionDistance", Quantity::metres, true, 0.0, 1.0},
                     {"horizontalAngularRange", Quantity::radians, true, 0.0, 3.2}};
  return kind;
}
