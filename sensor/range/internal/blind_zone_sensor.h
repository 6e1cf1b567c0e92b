#pragma once

#include <string>
#include <vector>

#include <boost/logic/tribool.hpp>

#include "platform/api.h"
#include "sensor/real/real_sensor.h"

namespace QV::sensor {

/**
 * A presence detector for a zone that no range sensor sees. While the robot stands still it reports
 * one point straight ahead, at minRange when something is there and at maxRange when not; while it
 * moves, nothing. Each change raises the event "Navigation/MotionDetected" with [name, [x, y, z] of
 * the far point in the ground frame, detected].
 */
class QV_API BlindZoneSensor : public RealSensor {
 public:
  /** Takes one key: above Model::kPresenceThreshold is a detection. Throws std::runtime_error for
   * more keys; without a key it reads nothing. */
  BlindZoneSensor(const std::string& name, const std::string& familyName,
                  boost::shared_ptr<QVBroker> broker, const std::vector<std::string>& memoryKeys,
                  const Math::SensorFieldOfView2D& fieldOfView);
  ~BlindZoneSensor() override;

 protected:
  std::vector<Math::MetricalData> xGetData() const override;
  bool xSubscribeToHardware() override { return true; }
  bool xUnsubscribeFromHardware() override { return true; }

 private:
  void xLogError(const char* method, const std::string& message) const;
  bool xIsRobotMoving() const;
  void xAnnounce(bool detected, const Math::Transform& sensorTransform) const;

  /** The state last announced; reading, which is const, changes it. */
  mutable boost::logic::tribool lastDetection;
  std::string eventName;
};

}  // namespace QV::sensor
