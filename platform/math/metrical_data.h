#pragma once

#include <string>
#include <vector>

#include "platform/api.h"
#include "platform/ko/clock.h"
#include "platform/math/position.h"
#include "platform/math/sensor_field_of_view_2d.h"
#include "platform/math/transform.h"

namespace QV::Math {

/** One reading of one sensor. */
struct QV_API MetricalData {
  std::string sensorName;
  std::string familyName;
  SensorFieldOfView2D fieldOfView;
  /** Places the sensor's frame: in the robot's frame, or in the map for simulated sensors. */
  Transform sensorTransform;
  /**
   * Metres, in the sensor's frame, those of simulated all-rays sensors in the robot's; empty when
   * there is nothing to report.
   */
  std::vector<Position3D> points;
  /** When the measurement was made. */
  ko::Clock::time_point timestamp;

  friend bool operator==(const MetricalData&, const MetricalData&) = default;
};

/** The record's points placed by its transform: in the frame that the transform is given in. */
QV_API std::vector<Position3D> pointsInFrame(const MetricalData& record);

/** How long before `now` the record was measured; negative for one from the future. Saturates. */
QV_API ko::Duration age(const MetricalData& record, ko::Clock::time_point now);

}  // namespace QV::Math
