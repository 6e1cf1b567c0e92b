#pragma once

#include <vector>

#include <boost/shared_ptr.hpp>

#include "platform/api.h"
#include "platform/navigation/occupancy_map.h"
#include "sensor/core/sensor_manager.h"

namespace QV::sensor {

/**
 * The sensors of a robot, simulated by rays into an occupancy map.
 *
 * The kind selects the sensors: -1 one laser all around, 0 two sonars, 1 three bumpers, two sonars
 * and a depth camera; any other kind has none. Tell where the robot is by setPose2D(), then read:
 * every read measures anew. Nothing moves by itself, and no time passes.
 *
 * - Frames: M is the map, G the robot's ground frame, S the sensor's frame. A record's transform
 *   places S in M, by `referencePose` and the sensor's mounting. Fans all look along the robot's
 *   heading, whatever the mounting. So points are in G, not in S, when both poses are the same, and
 *   pointsInFrame() is off by the mounting.
 * - Units: metres, radians; points stand 0.5 m high.
 * - Special values: an all-rays sensor, which is the laser of kind -1 or the depth camera of kind
 *   1, reports what meets nothing as a point at the maximum range; of others, a record without
 *   points means that nothing is in range.
 * - Lifetime: the map must outlive the manager; it is only read, though the pointer is not const.
 *   Without a map, records have no points.
 * - Threads: thread-safe. Each sensor takes the two poses whole, one sensor after the other. If
 *   two callers read at once, one may get what the other has just measured.
 * - Errors: none; an unknown name is logged.
 *
 * A robot that faces a wall:
 *
 *     QV::OccupancyMap hall(100, 100, 0.1f, QV::Math::Pose2D(), 0.0f);
 *     hall.setOccupancy(70, 50, 1.0f);
 *     QV::sensor::SimulatedSensorManager simulated(0, &hall);
 *     simulated.subscribe("my navigation");
 *     simulated.setPose2D({6.0f, 5.05f, 0.0f}, {6.0f, 5.05f, 0.0f});
 *     for (const auto& record : simulated.getMetricalData()) std::cout << record.points.size();
 */
class QV_API SimulatedSensorManager : public SensorManager {
 public:
  /** Makes the sensors of a kind, with the map that they look at, or null. */
  SimulatedSensorManager(int robotKind, QV::OccupancyMap* map);

  /** Does nothing: there is no hardware to debug. */
  void setSensorsDebug(bool debug) override;
  /** Sets the start of the rays (`scanPose`, in M) and the robot's pose in the records
   * (`referencePose`). With a single pose, pass it twice. */
  void setPose2D(const Math::Pose2D& scanPose, const Math::Pose2D& referencePose) override;

  /** A number of the simulation, without unit, always 1. The interface has it for callers, and
   * nothing here reads it. */
  float getSimulationParameter() const { return simulationParameter; }

 protected:
  std::vector<Math::MetricalData> xGetData() const override;
  boost::shared_ptr<const std::vector<Math::MetricalData>> xShareData() const override;
  void xOnSensorOnChanged(bool anySensorOn) override;

 private:
  void xInit(int robotKind, QV::OccupancyMap* map);
  void xAddSensors(int robotKind);
  void xSetOccMap(QV::OccupancyMap* map);

  float simulationParameter = 0.0f;
};

}  // namespace QV::sensor
