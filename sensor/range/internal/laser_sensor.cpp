#include "sensor/range/internal/laser_sensor.h"

#include <cmath>
#include <map>
#include <utility>

#include <boost/make_shared.hpp>
#include <boost/weak_ptr.hpp>

#include "platform/ko/clock.h"
#include "platform/ko/internal/call_lock.h"
#include "platform/ko/log.h"
#include "platform/math/internal/truncated.h"
#include "platform/middleware/contracts/device_manager_contract.h"

namespace QV::sensor {
namespace {

constexpr char kLaserCategory[] = "Navigation.LaserSensor";
constexpr boost::chrono::milliseconds kScanDelay(DeviceManagerContract::kScanDelay);
constexpr int kMostPolls = 50;
constexpr int kPollMs = 20;
// Switching off keeps only the bits of the three lasers that share the mode.
constexpr unsigned kSharedModeBits = 7;

// Each laser adds its bits to the mode that it reads, and waits for exactly that: two at once would
// undo what the other has set.
boost::shared_ptr<std::mutex> mutexOfMode(const QVBroker* broker, const std::string& actuator) {
  static std::mutex mutex;
  static std::map<std::pair<const QVBroker*, std::string>, boost::weak_ptr<std::mutex>> known;
  std::lock_guard lock(mutex);
  std::erase_if(known, [](const auto& entry) { return entry.second.expired(); });
  auto& weak = known[{broker, actuator}];
  auto result = weak.lock();
  if (!result) weak = result = boost::make_shared<std::mutex>();
  return result;
}

}  // namespace

LaserSensor::LaserSensor(const std::string& name, const std::string& familyName,
                         const Math::SensorFieldOfView2D& fieldOfView,
                         boost::shared_ptr<QVBroker> broker,
                         const std::vector<std::string>& memoryKeys, int operationModeMask,
                         const std::string& operationModeSetKey,
                         const std::string& operationModeKey, const std::string& timestampKey)
    : RealSensor(name, familyName, fieldOfView, memoryKeys, broker),
      operationModeMask(static_cast<std::uint8_t>(operationModeMask)),
      operationModeSetKey(operationModeSetKey),
      operationModeKey(operationModeKey),
      timestampKey(timestampKey),
      lastTimestamp(std::make_unique<std::atomic<std::int32_t>>(0)),
      dcm(broker),
      modeMutex(mutexOfMode(broker.get(), operationModeSetKey)) {
  this->fieldOfView.rayCount = static_cast<std::int32_t>(memoryKeys.size() / 2);
}

LaserSensor::~LaserSensor() = default;

std::vector<Math::MetricalData> LaserSensor::xGetData() const {
  std::vector<Math::MetricalData> result(1);
  Math::MetricalData& record = result.front();
  record.sensorName = name;
  record.familyName = familyName;
  try {
    *lastTimestamp = Math::truncated(memoryProxy->getData(timestampKey).toFloat());
  } catch (const std::exception& exception) {
    xLogError("xGetData", "unable to retrieve data: " + timestampKey + "\n" + exception.what());
    return {};
  }
  record.timestamp = ko::Clock::fromInt32ms(*lastTimestamp, ko::Clock::now(), 0) - kScanDelay;
  try {
    record.sensorTransform =
        Math::transformFromPose2D(Math::pose2DFromTransform(xGetTransformAtTime(record.timestamp)));
  } catch (const std::exception& exception) {
    xLogError("xGetData", "Unable to get transform for " + name + ": \n" + exception.what());
    return {};
  }
  record.fieldOfView = fieldOfView;
  try {
    record.points = xReadPoints();
  } catch (...) {
    xKeepCaught(ko::log::Level::info, kLaserCategory, "xGetData");
    return {};
  }
  return result;
}

std::vector<Math::Position3D> LaserSensor::xReadPoints() const {
  std::vector<Math::Position3D> points;
  points.reserve(memoryKeys.size());
  for (std::size_t i = 0; i + 1 < memoryKeys.size(); i += 2) {
    const float x = memoryProxy->getData(memoryKeys[i]).toFloat();
    const float y = memoryProxy->getData(memoryKeys[i + 1]).toFloat();
    if (std::sqrt(x * x + y * y) < fieldOfView.maxRange) points.emplace_back(x, y, 0.0f);
  }
  return points;
}

void LaserSensor::xLogError(const char* method, const std::string& message) const {
  logTrouble(ko::log::Level::error, kLaserCategory, method, message);
}

bool LaserSensor::xSetKey(bool activate) {
  ko::detail::CallLock lock(*modeMutex, "the switching", name);
  return xSwitch(activate);
}

bool LaserSensor::xSwitch(bool activate) {
  std::uint8_t mode = 0;
  try {
    mode = xReadOperationMode();
  } catch (...) {
    xLogError("xSetKey", "Unable to get operation mode for " + name);
    return false;
  }
  ko::log::verbose(kLaserCategory, "xSetKey")
      << "Getting " << int{mode} << " " << name << " state.";
  const auto newMode = static_cast<std::uint8_t>(
      activate ? mode | operationModeMask : mode & ~operationModeMask & kSharedModeBits);
  ko::log::verbose(kLaserCategory, "xSetKey")
      << "Setting " << int{newMode} << " for " << (activate ? "activation." : "desactivation");
  try {
    xSendOperationMode(newMode);
  } catch (...) {
    xLogError("xSetKey", "Unable to set operation mode for " + name);
    return false;
  }
  return xAwaitOperationMode(newMode);
}

std::uint8_t LaserSensor::xReadOperationMode() const {
  return static_cast<std::uint8_t>(
      Math::truncated(memoryProxy->getData(operationModeKey).toFloat()));
}

void LaserSensor::xSendOperationMode(std::uint8_t mode) {
  const QVValue timed = QVValue::array(static_cast<float>(mode), dcm.getTime(0));
  dcm.set(
      QVValue::array(operationModeSetKey, DeviceManagerContract::kClearAll, QVValue::array(timed)));
}

// A match at the very last poll comes too late.
bool LaserSensor::xAwaitOperationMode(std::uint8_t mode) {
  try {
    if (xReadOperationMode() == mode) return true;
    for (int poll = 1; poll <= kMostPolls; ++poll) {
      const std::uint8_t current = xReadOperationMode();
      ko::os::msleep(kPollMs);
      ko::log::verbose(kLaserCategory, "xSetKey")
          << "Waiting update " << int{current} << " " << name << " state.";
      if (current == mode && poll < kMostPolls) return true;
    }
  } catch (...) {
    xLogError("xSetKey", "Unable to get operation mode for " + name);
    return false;
  }
  xLogError("xSetKey", "Timeout while setting operation Mode for " + name);
  return false;
}

}  // namespace QV::sensor
