#pragma once

#include <atomic>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include <boost/shared_ptr.hpp>
#include <boost/thread/mutex.hpp>

#include "platform/api.h"
#include "platform/ko/periodic_task.h"
#include "platform/middleware/qv_broker.h"
#include "sensor/core/sensor_manager.h"

namespace QV::Model {
struct Robot;
struct SensorConfig;
}  // namespace QV::Model

namespace QV::sensor {

/**
 * The sensors of a robot, as its description lists them: families "Sonar", "Laser", "Shovel",
 * "HoleLaser", "BlindZone", "Asus" (depth camera and people) and "Touch". From a subscription that
 * leaves any of them started until one that leaves none, their records are gathered at once and
 * then every 100 ms on the event loop's threads, and readers never wait for hardware; afterwards
 * there are no records. Enabling and diagnosis don't begin or end that: lookAgain() does, after
 * either. Not copyable. Any thread may call any operation.
 */
class QV_API RealSensorManager : public SensorManager {
 public:
  /**
   * No sensors without a module "DCM". What can't be built is logged at error level and left out,
   * a sonar without memory keys silently. No broker: QVError.
   */
  explicit RealSensorManager(boost::shared_ptr<QVBroker> broker);
  /** Waits for a gathering that runs. Leaves hardware as it is, but stops the depth camera. */
  ~RealSensorManager() override;

  /** Switching it on enables every sensor; switching it off changes no sensor. */
  void setSensorsDebug(bool debug) override;

 protected:
  std::vector<Math::MetricalData> xGetData() const override;
  void xOnSensorOnChanged(bool anySensorOn) override;

 private:
  typedef std::map<std::string, std::string> Properties;

  struct Blueprint {
    const Model::Robot& robot;
    const Model::SensorConfig& config;
    std::string family;
    Math::SensorFieldOfView2D fieldOfView;
  };
  struct Factory;

  void xInit();
  void xInitSensors();
  void xCreate(const Factory& factory, const Blueprint& blueprint);
  void xCreateTouch(const Blueprint& blueprint);
  void xCreateDepthCamera(const Blueprint& blueprint);
  void xCreateLaser(const Blueprint& blueprint);
  void xCreateSonar(const Blueprint& blueprint);
  void xCreateBlindZone(const Blueprint& blueprint);
  void xCreateHoleLaser(const Blueprint& blueprint);
  void xAddSensor(boost::shared_ptr<Sensor> sensor);

  Math::SensorFieldOfView2D xParseProperties(const Properties& properties) const;
  bool xExtractLaserProperties(const Properties& properties, std::string& setOperationMode,
                               std::string& getOperationMode, int& regIndex,
                               std::string& timestamp) const;
  bool xExtractVerticalLaserProperties(const Properties& properties, std::string& setOperationMode,
                                       std::string& getOperationMode, int& regIndex,
                                       std::string& timestamp, std::string& inclination,
                                       std::string& status) const;

  bool dcmPresent = false;
  std::atomic<bool> sensorsDebug{false};
  boost::shared_ptr<QVBroker> broker;
  bool updateRunning = false;
  boost::mutex updateMutex;
  std::int32_t updatePeriodMs = 100;
  ko::PeriodicTask updateTask;
};

}  // namespace QV::sensor
