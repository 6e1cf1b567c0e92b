#include "sensor/range/internal/sonar_sensor.h"

#include <stdexcept>

#include "platform/ko/log.h"
#include "platform/middleware/contracts/sonar_contract.h"

namespace QV::sensor {
namespace {

constexpr char kSonarCategory[] = "Navigation.SonarSensor";
constexpr int kArcPoints = 15;
constexpr float kTooNear = 0.1f;
// The range that memory holds was measured about this long ago.
constexpr ko::Duration kMeasurementDelay(500'000'000);

// A cone is the same after any turn about its own axis. Of a sonar that hangs upside down no
// rotation about the vertical is the nearest.
Math::Transform upright(Math::Transform transform) {
  if (transform(2, 2) >= 0.0f) return transform;
  for (int row = 0; row < 3; ++row) {
    transform(row, 1) = -transform(row, 1);
    transform(row, 2) = -transform(row, 2);
  }
  return transform;
}

}  // namespace

SonarSensor::SonarSensor(const std::string& name, const std::string& familyName,
                         const Math::SensorFieldOfView2D& fieldOfView,
                         const std::vector<std::string>& memoryKeys,
                         boost::shared_ptr<QVBroker> broker, bool subscribeToModule)
    : RealSensor(name, familyName, fieldOfView, memoryKeys, broker),
      broker(broker),
      subscribeToModule(subscribeToModule) {
  if (memoryKeys.size() != 1) {
    throw std::runtime_error("Wrong memory keys size for " + name + ". Given " +
                             std::to_string(memoryKeys.size()) + ".");
  }
  this->fieldOfView.rayCount = kArcPoints;
}

SonarSensor::~SonarSensor() = default;

std::vector<Math::MetricalData> SonarSensor::xGetData() const {
  std::vector<Math::MetricalData> result;
  result.push_back(xGetMetricalDataMeta());
  Math::MetricalData& record = result.front();
  float range = 0.0f;
  try {
    range = memoryProxy->getData(memoryKeys[0]).toFloat();
  } catch (...) {
    xKeepCaught(ko::log::Level::info, kSonarCategory, "xGetData");
    return {};
  }
  Math::Transform transform;
  try {
    transform = xGetTransformAtTime(record.timestamp - kMeasurementDelay);
  } catch (const std::exception& exception) {
    logTrouble(ko::log::Level::error, kSonarCategory, "xGetData", exception.what());
    return {};
  }
  if (fieldOfView.minRange >= range) range = kTooNear;
  record.points = xArc(range);
  record.sensorTransform =
      Math::axisRotationProjection(Math::Position3D(0.0f, 0.0f, 1.0f), upright(transform));
  return result;
}

// Strictly inside the aperture: its edges are not sampled.
std::vector<Math::Position3D> SonarSensor::xArc(float range) const {
  std::vector<Math::Position3D> points;
  points.reserve(static_cast<std::size_t>(fieldOfView.rayCount));
  const float step = fieldOfView.angularRange / static_cast<float>(fieldOfView.rayCount + 1);
  float angle = -fieldOfView.angularRange * 0.5f;
  for (int i = 0; i < fieldOfView.rayCount; ++i) {
    angle += step;
    const auto pose = Math::Pose2D(0.0f, 0.0f, angle) * Math::Pose2D(range, 0.0f, 0.0f);
    points.emplace_back(pose.x, pose.y, 0.0f);
  }
  return points;
}

bool SonarSensor::xSubscribeToHardware() {
  return xCallModule(SonarContract::kSubscribe, "xSubscribeToHardware");
}

bool SonarSensor::xUnsubscribeFromHardware() {
  return xCallModule(SonarContract::kUnsubscribe, "xUnsubscribeFromHardware");
}

bool SonarSensor::xCallModule(const char* method, const char* caller) {
  if (!subscribeToModule) return true;
  try {
    broker->getProxy(SonarContract::kModule, 0)->callVoid(method, name);
    return true;
  } catch (const std::exception& exception) {
    logTrouble(ko::log::Level::warning, kSonarCategory, caller,
               std::string("Unable to reach QVSonar module: \n") + exception.what());
    return false;
  }
}

}  // namespace QV::sensor
