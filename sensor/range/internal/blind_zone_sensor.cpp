#include "sensor/range/internal/blind_zone_sensor.h"

#include <cmath>
#include <stdexcept>

#include "platform/ko/log.h"
#include "platform/middleware/contracts/motion_contract.h"
#include "platform/middleware/contracts/navigation_contract.h"
#include "platform/model/sensor_kind.h"

namespace QV::sensor {
namespace {

constexpr char kBlindZoneCategory[] = "Navigation.BlindZoneSensor";
constexpr float kStillSpeed = 0.01f;
constexpr float kStillTurn = 0.1f;

}  // namespace

BlindZoneSensor::BlindZoneSensor(const std::string& name, const std::string& familyName,
                                 boost::shared_ptr<QVBroker> broker,
                                 const std::vector<std::string>& memoryKeys,
                                 const Math::SensorFieldOfView2D& fieldOfView)
    : RealSensor(name, familyName, fieldOfView, memoryKeys, broker),
      lastDetection(true),
      eventName(NavigationContract::kMotionDetectedEvent) {
  if (memoryKeys.size() >= 2) {
    throw std::runtime_error(name + " cannot be instantiated with more than one key");
  }
  try {
    memoryProxy->declareEvent(eventName);
  } catch (...) {
    xLogError("BlindZoneSensor", "Unable to declare event " + eventName);
  }
}

BlindZoneSensor::~BlindZoneSensor() = default;

std::vector<Math::MetricalData> BlindZoneSensor::xGetData() const {
  std::vector<Math::MetricalData> result;
  result.push_back(xGetMetricalDataMeta());
  Math::MetricalData& record = result.front();
  try {
    if (xIsRobotMoving()) {
      xExcuse("the robot moves");
      return {};
    }
    record.sensorTransform =
        Math::Transform(motionProxy.getTransform(name, MotionContract::kGroundFrame, true));
  } catch (const std::exception& exception) {
    xLogError("xGetData", std::string("Unable to retrieve transform: ") + exception.what());
    return {};
  }
  bool detected = false;
  try {
    detected = memoryProxy->getData(memoryKeys.at(0)).toFloat() > Model::kPresenceThreshold;
  } catch (...) {
    xKeepCaught(ko::log::Level::info, kBlindZoneCategory, "xGetData");
    return {};
  }
  if (lastDetection != detected) xAnnounce(detected, record.sensorTransform);
  const float range = detected ? fieldOfView.minRange : fieldOfView.maxRange;
  record.points = {Math::Position3D(range, 0.0f, 0.0f)};
  return result;
}

void BlindZoneSensor::xLogError(const char* method, const std::string& message) const {
  logTrouble(ko::log::Level::error, kBlindZoneCategory, method, message);
}

bool BlindZoneSensor::xIsRobotMoving() const {
  const Math::Pose2D velocity(motionProxy.getRobotVelocity());
  // It is above no limit, but the robot may go at any speed.
  if (std::isnan(velocity.x) || std::isnan(velocity.y) || std::isnan(velocity.theta))
    throw std::runtime_error("the robot's velocity is not a number");
  return std::sqrt(velocity.x * velocity.x + velocity.y * velocity.y) > kStillSpeed ||
         std::abs(velocity.theta) > kStillTurn;
}

void BlindZoneSensor::xAnnounce(bool detected, const Math::Transform& sensorTransform) const {
  lastDetection = detected;
  const Math::Position3D far = sensorTransform * Math::Position3D(fieldOfView.maxRange, 0.0f, 0.0f);
  try {
    memoryProxy->raiseEvent(eventName,
                            QVValue::array(name, QVValue::array(far.x, far.y, far.z), detected));
  } catch (const std::exception& exception) {
    xLogError("xGetData", "Unable to raise " + eventName + ": " + exception.what());
  }
}

}  // namespace QV::sensor
