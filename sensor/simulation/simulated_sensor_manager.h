#pragma once

#include <vector>

#include <boost/shared_ptr.hpp>

#include "platform/api.h"
#include "platform/navigation/occupancy_map.h"
#include "sensor/core/sensor_manager.h"

namespace QV::sensor {

/**
 * The sensors of a robot, simulated by rays into an occupancy map. Each read measures anew, at the
 * pose that setPose2D() has set; no time passes. Kind -1 has one laser all around, 0 two sonars, 1
 * three bumpers, two sonars and a depth camera, any other kind none.
 * - Frames: M is the map, G the robot's ground frame, S the sensor's frame. The transform places S
 *   in M, by `referencePose` and the mounting. Rays look along the robot's heading, whatever the
 *   mounting. So points are in G, 0.5 m high, and pointsInFrame() is off by the mounting;
 *   docs/guide.md also tells of two different poses.
 * - Special values: of the laser and the camera, a ray that meets nothing gives a point at the
 *   maximum range; a sonar or bumper that meets nothing gives no point.
 * - Lifetime: the map must outlive the manager; it is only read, though the pointer is not const.
 * - Threads: thread-safe. If two callers read at once, one may get what the other has just
 *   measured. A read during setPose2D() may get some sensors at the old poses and others at the new
 *   ones, but no sensor mixes the two.
 * - Errors: an unknown kind is logged; unknown names as in SensorManager.
 *
 *     QV::sensor::SimulatedSensorManager simulated(0, map.get());
 *     simulated.subscribe("my navigation");
 *     simulated.setPose2D({3.0f, 6.3f, 0.0f}, {3.0f, 6.3f, 0.0f});  // m, m, rad
 *     for (const auto& record : simulated.getMetricalData()) std::cout << record.points.size();
 */
class QV_API SimulatedSensorManager : public SensorManager {
 public:
  /** Makes the sensors of a kind. Without a map, records have no points. */
  SimulatedSensorManager(int robotKind, QV::OccupancyMap* map);

  /** Does nothing: there is no hardware to debug. */
  void setSensorsDebug(bool debug) override;
  /** Sets the start of the rays and the robot's pose in the records, in M; at first both are 0. */
  void setPose2D(const Math::Pose2D& scanPose, const Math::Pose2D& referencePose) override;

  /** Always 1. The interface has it for callers; nothing here reads it. */
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
