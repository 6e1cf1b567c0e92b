#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "platform/api.h"
#include "sensor/real/real_sensor.h"

namespace QV::sensor {

/**
 * A laser scanner whose points stand in memory as pairs of keys, x and y in metres in the sensor's
 * frame, with a key for the scan's time. Points at maxRange or beyond are dropped. Records lie in
 * the ground plane and are dated 50 ms before the published time. Starting and stopping waits up to
 * a second for the hardware to confirm; lasers of one broker that share a mode do so one after the
 * other. Hardware that confirms a start later than that stays on, although the start has failed,
 * until the laser is started and stopped once more.
 */
class QV_API LaserSensor : public RealSensor {
 public:
  /**
   * `operationModeMask`: this laser's bits of the operation mode, the low 8 count.
   * `operationModeSetKey`: the actuator that takes the mode; `operationModeKey`: the memory key
   * that shows it; `timestampKey`: the memory key of the scan's time, the device manager's
   * milliseconds.
   */
  LaserSensor(const std::string& name, const std::string& familyName,
              const Math::SensorFieldOfView2D& fieldOfView, boost::shared_ptr<QVBroker> broker,
              const std::vector<std::string>& memoryKeys, int operationModeMask,
              const std::string& operationModeSetKey, const std::string& operationModeKey,
              const std::string& timestampKey);
  ~LaserSensor() override;

 protected:
  std::vector<Math::MetricalData> xGetData() const override;
  bool xSubscribeToHardware() override { return xSetKey(true); }
  bool xUnsubscribeFromHardware() override { return xSetKey(false); }

 private:
  void xLogError(const char* method, const std::string& message) const;
  bool xSetKey(bool activate);
  bool xSwitch(bool activate);
  std::uint8_t xReadOperationMode() const;
  void xSendOperationMode(std::uint8_t mode);
  bool xAwaitOperationMode(std::uint8_t mode);
  std::vector<Math::Position3D> xReadPoints() const;

  std::uint8_t operationModeMask;
  std::string operationModeSetKey;
  std::string operationModeKey;
  std::string timestampKey;
  /** Written by reading, which is const. */
  std::unique_ptr<std::atomic<std::int32_t>> lastTimestamp;
  DCMProxy dcm;
  const boost::shared_ptr<std::mutex> modeMutex;
};

}  // namespace QV::sensor
