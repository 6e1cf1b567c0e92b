#pragma once

#include <vector>

#include <boost/shared_ptr.hpp>

#include "platform/api.h"
#include "sensor/simulation/internal/simulated_sensor.h"

namespace QV::sensor {

/** The catalogue of simulated sensors, by the robot's kind. */
class QV_API RobotModelMock {
 public:
  /** New sensors for kind -1, 0 or 1; none, and an error in the log, for any other kind. */
  std::vector<boost::shared_ptr<SimulatedSensor>> getSimulatedSensors(int robotKind) const;

  /** True if there are sensors of a kind; logs no line. */
  static bool hasSensors(int robotKind) { return robotKind >= -1 && robotKind <= 1; }

 private:
  std::vector<boost::shared_ptr<SimulatedSensor>> xGetSimulatedSensorsX() const;
  std::vector<boost::shared_ptr<SimulatedSensor>> xGetSimulatedSensors1() const;
  std::vector<boost::shared_ptr<SimulatedSensor>> xGetSimulatedSensorsDVT2() const;
};

}  // namespace QV::sensor
