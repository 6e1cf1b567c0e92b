#include "sensor/range/smart_sonar.h"

#include "sensor/utils/field_of_view_obstruction.h"

namespace QV::sensor {
namespace {

// Frame 0 of the motion service: the robot's body.
constexpr int kBodyFrame = 0;

}  // namespace

SmartSonar::SmartSonar(const std::string& name, const std::string& familyName,
                       const Math::SensorFieldOfView2D& fieldOfView,
                       const std::vector<std::string>& memoryKeys,
                       boost::shared_ptr<QVBroker> broker, bool subscribeToModule)
    : SonarSensor(name, familyName, fieldOfView, memoryKeys, broker, subscribeToModule),
      halfAperture(fieldOfView.angularRange * 0.5f),
      sensorTransform(motionProxy.getTransform(name, kBodyFrame, true)) {
  initCollisionShapesAndJointConfig(broker, collisionShapes);
}

SmartSonar::~SmartSonar() = default;

std::vector<Math::MetricalData> SmartSonar::xGetData() const {
  const auto joints = buildTransformsFromCollisionShapes(collisionShapes, motionProxy);
  if (isSensorFOVObstructed(sensorTransform, collisionShapes, joints, halfAperture)) return {};
  return SonarSensor::xGetData();
}

}  // namespace QV::sensor
