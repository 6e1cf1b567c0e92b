#pragma once

#include <optional>
#include <string>
#include <vector>

#include "platform/api.h"
#include "sensor/range/internal/laser_sensor.h"

namespace QV::sensor {

/**
 * A laser aimed at the floor, with two status values beside its scan. A scan with an error has no
 * points; at status 2 it is passed on; at 1 and 4, a hole, each point is pulled in to minRange; at
 * any other it has no points.
 */
class QV_API HoleLaserSensor : public LaserSensor {
 public:
  /** Takes the arguments of LaserSensor, and the memory keys of the error and of the hole status.
   */
  HoleLaserSensor(const std::string& name, const std::string& familyName,
                  const Math::SensorFieldOfView2D& fieldOfView, boost::shared_ptr<QVBroker> broker,
                  const std::vector<std::string>& memoryKeys, int operationModeMask,
                  const std::string& operationModeSetKey, const std::string& operationModeKey,
                  const std::string& timestampKey, const std::string& holeErrorKey,
                  const std::string& holeStatusKey);
  ~HoleLaserSensor() override;

 protected:
  std::vector<Math::MetricalData> xGetData() const override;

 private:
  std::optional<float> xReadStatus(const std::string& key) const;

  std::string holeErrorKey;
  std::string holeStatusKey;
};

}  // namespace QV::sensor
