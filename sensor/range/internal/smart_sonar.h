#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "platform/api.h"
#include "platform/model/collision_shape.h"
#include "platform/model/joint_config.h"
#include "sensor/range/internal/sonar_sensor.h"

namespace QV::sensor {

/**
 * A sonar that reads nothing while the robot's own arms are in its cone. Its place on the body is
 * requested once, the arms' places for each reading; an exception of that reaches the caller.
 */
class QV_API SmartSonar : public SonarSensor {
 public:
  /**
   * Takes the arguments of SonarSensor. Throws what reading the robot's description or pose throws.
   * An angularRange of pi or more gives no cone: each reading throws, if there are arms.
   */
  SmartSonar(const std::string& name, const std::string& familyName,
             const Math::SensorFieldOfView2D& fieldOfView,
             const std::vector<std::string>& memoryKeys, boost::shared_ptr<QVBroker> broker,
             bool subscribeToModule);
  ~SmartSonar() override;

 protected:
  std::vector<Math::MetricalData> xGetData() const override;

 private:
  std::vector<std::shared_ptr<Model::CollisionShape>> collisionShapes;
  std::map<std::string, Model::JointConfig> jointConfig;
  float halfAperture;
  /** The sonar in the robot's body frame. */
  Math::Transform sensorTransform;
};

}  // namespace QV::sensor
