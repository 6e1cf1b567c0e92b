#pragma once

#include <string>
#include <vector>

#include "platform/api.h"
#include "platform/ko/clock.h"
#include "platform/math/position.h"
#include "platform/math/sensor_field_of_view_2d.h"
#include "platform/math/transform.h"

namespace QV::Math {

/**
 * A record: one reading of one sensor, or of a part of it. A value that never changes by itself,
 * however old it gets; thread-safe to read.
 * - Frames: S is the sensor's frame, x the direction in which it looks, y to the left, z up. Points
 *   are in S, and the transform places S in the robot's ground frame G. Of simulated sensors,
 *   points are in G, and the transform places S in the map M: see SimulatedSensorManager.
 * - Units: metres, radians, nanoseconds of ko::Clock.
 * - Special values: no points: nothing to report, or, of a hole laser, not known. A point at the
 *   maximum range or beyond: no echo (a sonar's, for example).
 *
 *     for (const auto& record : manager.getMetricalData("Laser"))
 *       for (const QV::Math::Position3D& point : QV::Math::pointsInFrame(record))
 *         std::cout << point.x << " m ahead, " << point.y << " m to the left\n";
 */
struct QV_API MetricalData {
  /** For a touch, the name of the touched part; else the name to subscribe with. */
  std::string sensorName;
  std::string familyName;
  SensorFieldOfView2D fieldOfView;
  /** The pose of S at the time of the measurement; a sonar's, half a second before the
   * timestamp. */
  Transform sensorTransform;
  std::vector<Position3D> points;
  /** The time of the measurement. For a sonar, a blind zone and a touch: the time at which the
   * library read the driver's value. A laser's: 50 ms before the time that its driver wrote. */
  ko::Clock::time_point timestamp;

  friend bool operator==(const MetricalData&, const MetricalData&) = default;
};

/** The record's points, in the frame that its transform is given in. */
QV_API std::vector<Position3D> pointsInFrame(const MetricalData& record);

/** The time from the timestamp to `now`; negative for a record from the future. Saturates. */
QV_API ko::Duration age(const MetricalData& record, ko::Clock::time_point now);

}  // namespace QV::Math
