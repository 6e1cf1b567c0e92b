#pragma once

#include <string>
#include <vector>

#include "platform/api.h"
#include "sensor/real/real_sensor.h"

namespace QV::sensor {

/**
 * An ultrasonic sensor: one range from memory, as an arc of 15 points across its aperture at that
 * range. Ranges up to minRange are reported as 0.1 m: too near to tell. Its transform is that of
 * half a second before the reading, turned about the vertical only, also upside down.
 */
class QV_API SonarSensor : public RealSensor {
 public:
  /**
   * Exactly one key, that of the range in metres, or std::runtime_error. With `subscribeToModule`
   * the sonar driver, module "QVSonar", runs while this sensor is started.
   */
  SonarSensor(const std::string& name, const std::string& familyName,
              const Math::SensorFieldOfView2D& fieldOfView,
              const std::vector<std::string>& memoryKeys, boost::shared_ptr<QVBroker> broker,
              bool subscribeToModule);
  ~SonarSensor() override;

 protected:
  std::vector<Math::MetricalData> xGetData() const override;
  bool xSubscribeToHardware() override;
  bool xUnsubscribeFromHardware() override;

 private:
  bool xCallModule(const char* method, const char* caller);
  std::vector<Math::Position3D> xArc(float range) const;

  boost::shared_ptr<QVBroker> broker;
  bool subscribeToModule;
};

}  // namespace QV::sensor
