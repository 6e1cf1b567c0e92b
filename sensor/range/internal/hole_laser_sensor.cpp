#include "sensor/range/internal/hole_laser_sensor.h"

#include <cmath>

#include "platform/ko/log.h"
#include "platform/math/internal/truncated.h"

namespace QV::sensor {
namespace {

constexpr char kHoleLaserCategory[] = "Navigation.HoleLaserSensor";

// An error that is no number is an error.
bool isError(float status) {
  return std::isnan(status) || Math::truncated(status) != 0;
}

void pullIn(std::vector<Math::MetricalData>& records) {
  for (Math::MetricalData& record : records) {
    for (Math::Position3D& point : record.points) point.x = record.fieldOfView.minRange;
  }
}

}  // namespace

HoleLaserSensor::HoleLaserSensor(const std::string& name, const std::string& familyName,
                                 const Math::SensorFieldOfView2D& fieldOfView,
                                 boost::shared_ptr<QVBroker> broker,
                                 const std::vector<std::string>& memoryKeys, int operationModeMask,
                                 const std::string& operationModeSetKey,
                                 const std::string& operationModeKey,
                                 const std::string& timestampKey, const std::string& holeErrorKey,
                                 const std::string& holeStatusKey)
    : LaserSensor(name, familyName, fieldOfView, broker, memoryKeys, operationModeMask,
                  operationModeSetKey, operationModeKey, timestampKey),
      holeErrorKey(holeErrorKey),
      holeStatusKey(holeStatusKey) {}

HoleLaserSensor::~HoleLaserSensor() = default;

std::optional<float> HoleLaserSensor::xReadStatus(const std::string& key) const {
  try {
    return memoryProxy->getData(key).toFloat();
  } catch (const std::exception& exception) {
    logTrouble(ko::log::Level::error, kHoleLaserCategory, "xGetData",
               "unable to retrieve data: " + key + "\n" + exception.what());
    return std::nullopt;
  }
}

std::vector<Math::MetricalData> HoleLaserSensor::xGetData() const {
  const auto error = xReadStatus(holeErrorKey);
  if (!error) return {};
  const auto hole = xReadStatus(holeStatusKey);
  if (!hole) return {};
  auto records = LaserSensor::xGetData();
  if (records.empty()) {
    logTrouble(ko::log::Level::error, kHoleLaserCategory, "xGetData",
               "Invalid hole data for " + name);
    return {};
  }
  const int status = isError(*error) ? 0 : Math::truncated(*hole);
  if (status == 1 || status == 4) {
    pullIn(records);
  } else if (status != 2) {
    xNoteGarbage();
    records.front().points.clear();
  }
  return records;
}

}  // namespace QV::sensor
