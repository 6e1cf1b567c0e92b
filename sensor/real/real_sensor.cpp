#include "sensor/real/real_sensor.h"

#include <algorithm>
#include <cmath>
#include <locale>
#include <sstream>

#include <boost/chrono/io/duration_io.hpp>
#include <boost/make_shared.hpp>

#include "platform/ko/log.h"
#include "platform/middleware/contracts/motion_contract.h"

namespace QV::sensor {
namespace {

constexpr char kRealSensorCategory[] = "Navigation.RealSensor";
constexpr char kGuard[] = "xCorrectMetricalDataWithTimestamp";
// A finer wall than that is a slip, and would fill the memory.
constexpr float kMostArcPoints = 100'000.0f;

// The conversion of a limit as long as "for ever" would overflow.
ko::Duration inNanoseconds(const boost::chrono::milliseconds& limit) {
  const auto most = boost::chrono::duration_cast<boost::chrono::milliseconds>(ko::Duration::max());
  return std::clamp(limit, -most, most);
}

std::string inMilliseconds(ko::Duration duration) {
  std::ostringstream text;
  text.imbue(std::locale::classic());
  text << boost::chrono::duration_cast<boost::chrono::milliseconds>(duration);
  return text.str();
}

std::vector<Math::Position3D> arcOfPoints(float angularRange, float range, float angularStep) {
  std::vector<Math::Position3D> points;
  const float steps = angularRange / angularStep;
  if (!(steps >= 1.0f) || std::isinf(angularRange)) return {};
  if (steps > kMostArcPoints) angularStep = angularRange / kMostArcPoints;
  const auto count = static_cast<unsigned>(std::min(steps, kMostArcPoints));
  points.reserve(count);
  float angle = -0.5f * angularRange;
  for (unsigned i = 0; i < count; ++i) {
    const auto point = Math::Pose2D(0.0f, 0.0f, angle) * Math::Position2D(range, 0.0f);
    points.emplace_back(point, 0.0f);
    angle += angularStep;
  }
  return points;
}

}  // namespace

RealSensor::RealSensor(const std::string& name, const std::string& familyName,
                       const Math::SensorFieldOfView2D& fieldOfView,
                       const std::vector<std::string>& memoryKeys,
                       boost::shared_ptr<QVBroker> broker)
    : Sensor(name, familyName, fieldOfView),
      memoryProxy(boost::make_shared<QVMemoryProxy>(broker)),
      motionProxy(broker),
      dcmProxy(broker),
      memoryKeys(memoryKeys) {
  if (!memoryKeys.empty())
    this->fieldOfView.rayCount = static_cast<std::int32_t>(memoryKeys.size());
}

RealSensor::~RealSensor() = default;

std::vector<Math::MetricalData> RealSensor::getData() const {
  return Sensor::getData();
}

Math::MetricalData RealSensor::xGetMetricalDataMeta() const {
  Math::MetricalData record;
  record.sensorName = name;
  record.familyName = familyName;
  record.fieldOfView = fieldOfView;
  record.timestamp = ko::Clock::fromInt32ms(dcmProxy.getTime(0));
  return record;
}

Math::Transform RealSensor::xGetTransformAtTime(ko::Clock::time_point time) const {
  return Math::Transform(motionProxy.getGenericProxy().call<std::vector<float>>(
      MotionContract::kGetSensorTransformAtTime, name, time));
}

void RealSensor::xCorrectMetricalDataWithTimestamp(std::vector<Math::MetricalData>& data,
                                                   const ko::Clock::time_point& now,
                                                   const boost::chrono::milliseconds& maxAge,
                                                   QVMotionProxy motion, float range,
                                                   float angularStep) const {
  const ko::Duration limit = inNanoseconds(maxAge);
  for (Math::MetricalData& record : data) {
    const ko::Duration age = Math::age(record, now);
    if (age <= limit) continue;
    logTrouble(ko::log::Level::warning, kRealSensorCategory, kGuard,
               "Data from " + record.sensorName + " are " + inMilliseconds(age) + " old.");
    record.points.clear();
    try {
      record.sensorTransform = Math::Transform(
          motion.getTransform(record.sensorName, MotionContract::kGroundFrame, true));
    } catch (const std::exception& exception) {
      logTrouble(ko::log::Level::warning, kRealSensorCategory, kGuard, exception.what());
      continue;
    }
    if (record.fieldOfView.angularRange / angularStep > kMostArcPoints) {
      logTrouble(ko::log::Level::warning, kRealSensorCategory, kGuard,
                 "The arc of " + record.sensorName + " gets no more than 100000 points.");
    }
    record.points = arcOfPoints(record.fieldOfView.angularRange, range, angularStep);
  }
}

}  // namespace QV::sensor
