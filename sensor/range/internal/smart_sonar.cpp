#include "sensor/range/internal/smart_sonar.h"

#include "platform/middleware/contracts/motion_contract.h"
#include "sensor/utils/internal/field_of_view_obstruction.h"

namespace QV::sensor {
SmartSonar::SmartSonar(const std::string& name, const std::string& familyName,
                       const Math::SensorFieldOfView2D& fieldOfView,
                       const std::vector<std::string>& memoryKeys,
                       boost::shared_ptr<QVBroker> broker, bool subscribeToModule)
    : SonarSensor(name, familyName, fieldOfView, memoryKeys, broker, subscribeToModule),
      halfAperture(fieldOfView.angularRange * 0.5f),
      sensorTransform(motionProxy.getTransform(name, MotionContract::kBodyFrame, true)) {
  initCollisionShapesAndJointConfig(broker, collisionShapes);
}

SmartSonar::~SmartSonar() = default;

std::vector<Math::MetricalData> SmartSonar::xGetData() const {
  const auto joints = buildTransformsFromCollisionShapes(collisionShapes, motionProxy);
  if (isSensorFOVObstructed(sensorTransform, collisionShapes, joints, halfAperture)) {
    xExcuse("the robot's own body is in its way");
    return {};
  }
  return SonarSensor::xGetData();
}

}  // namespace QV::sensor
