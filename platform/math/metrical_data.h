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
 * A record: one reading of one sensor, or of a part of it.
 *
 * - Frames: S is the sensor's frame, x the direction in which it looks, y to the left, z up. Points
 *   are in S, those of simulated sensors in the robot's ground frame G: see SimulatedSensorManager.
 *   The transform places S in G; that of a simulated sensor, in the map M.
 * - Units: metres, radians, nanoseconds of ko::Clock.
 * - Special values: no points: nothing to report, or, of a hole laser, not known. A point at the
 *   maximum range or beyond: no echo (a sonar's, for example). A record never changes,
 *   however old it gets.
 * - Lifetime, threads: a value, to copy and keep.
 * - Errors: none.
 *
 * Place the points of a record around the robot:
 *
 *     for (const auto& record : manager.getMetricalData("Laser"))
 *       for (const QV::Math::Position3D& point : QV::Math::pointsInFrame(record))
 *         std::cout << point.x << " m ahead, " << point.y << " m to the left\n";
 */
struct QV_API MetricalData {
  /** The name to subscribe with; for a touch, the name of the touched part. */
  std::string sensorName;
  std::string familyName;
  SensorFieldOfView2D fieldOfView;
  /** The pose of S in G, or in M for simulated sensors, at the time of the measurement. */
  Transform sensorTransform;
  /** The points in S, metres; those of simulated sensors in G. */
  std::vector<Position3D> points;
  /** The time of the measurement. For a sonar, a blind zone and a touch: the time at which the
   * library read the driver's value. */
  ko::Clock::time_point timestamp;

  friend bool operator==(const MetricalData&, const MetricalData&) = default;
};

/** Places the record's points by its transform, in the frame that the transform is given in. */
QV_API std::vector<Position3D> pointsInFrame(const MetricalData& record);

/**
 * Returns the time between the measurement and `now`; negative for a record from the future.
 * Saturates.
 */
QV_API ko::Duration age(const MetricalData& record, ko::Clock::time_point now);

}  // namespace QV::Math
