#pragma once

#include <vector>

#include <boost/shared_ptr.hpp>

#include "platform/api.h"
#include "platform/navigation/occupancy_map.h"
#include "sensor/core/sensor_manager.h"

namespace QV::sensor {

/**
 * The sensors of a robot of some kind, simulated in an occupancy map. Give the robot's pose with
 * setPose2D, which any thread may call: each sensor takes the pair whole, one after the other;
 * every read measures anew. A caller who has one pose passes it twice: points of
 * all-rays sensors are then in the robot's frame, and record transforms place sensors in the map.
 */
class QV_API SimulatedSensorManager : public SensorManager {
 public:
  /**
   * Kinds -1 (a perfect laser), 0 (two sonars) and 1 (bumpers, sonars, depth camera); any other has
   * no sensors. `map` must outlive the manager; without one, records have no points.
   */
  SimulatedSensorManager(int robotKind, QV::OccupancyMap* map);

  void setSensorsDebug(bool debug) override;
  void setPose2D(const Math::Pose2D& scanPose, const Math::Pose2D& referencePose) override;

  /** A parameter of the simulation for callers, without unit. */
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
