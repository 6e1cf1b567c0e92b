#include "sensor/perception/internal/touch_sensor.h"

#include "platform/ko/internal/call_lock.h"
#include "platform/ko/log.h"
#include "platform/middleware/contracts/motion_contract.h"
#include "platform/middleware/contracts/navigation_contract.h"

namespace QV::sensor {
namespace {

constexpr char kTouchCategory[] = "Navigation.TouchSensor";
// Metres along the x axis of the group's frame: inside the body, where the contact presses.
constexpr float kPointDepth = -0.05f;

}  // namespace

TouchSensor::TouchSensor(const std::string& name, const std::string& familyName,
                         boost::shared_ptr<QVBroker> broker,
                         const Math::SensorFieldOfView2D& fieldOfView)
    : RealSensor(name, familyName, fieldOfView, {}, broker),
      eventName(NavigationContract::kTouchChangedEvent) {
  try {
    memoryProxy->subscribeToEvent(eventName, NavigationContract::kModule,
                                  NavigationContract::kOnTouchChanged);
  } catch (const std::exception& exception) {
    logTrouble(ko::log::Level::error, kTouchCategory, "TouchSensor",
               "Error while subscribing to " + eventName + ": " + exception.what());
    throw;
  }
  enabledTouchTypes = {Touch::BUMPER, Touch::TACTILE, Touch::JOINT};
}

TouchSensor::~TouchSensor() = default;

void TouchSensor::onTouchChanged(const std::string&, QVValue value, const std::string&) {
  std::vector<Touch::TouchGroupEvent> groups;
  if (!Touch::extractTouchEventInfo(value, groups)) {
    xNoteGarbage();
    logTrouble(ko::log::Level::error, kTouchCategory, "onTouchChanged", "Invalid touch extraction");
    return;
  }
  const auto update = [&] {
    for (const auto& group : groups) xUpdate(group);
  };
  // Inside a reading's sleep, on its thread: the reading has its own list.
  if (ko::detail::isHeldHere(&touchedMutex)) return update();
  const ko::detail::CallLock lock(touchedMutex, "onTouchChanged", name);
  update();
}

void TouchSensor::xUpdate(const Touch::TouchGroupEvent& group) {
  if (!group.touched) {
    touchedGroups.erase(group.groupName);
    return;
  }
  for (const auto type : group.types) {
    if (xIsTouchTypeEnabled(type)) touchedGroups.insert(group.groupName);
  }
}

void TouchSensor::enableTouchType(int type) {
  std::lock_guard lock(enabledTypesMutex);
  if (enabledTouchTypes.insert(static_cast<Touch::TOUCH_DETECTION_TYPE>(type)).second) return;
  ko::log::info(kTouchCategory, "enableTouchType") << "Touch type " << type << " already enabled.";
}

void TouchSensor::disableTouchType(int type) {
  std::lock_guard lock(enabledTypesMutex);
  if (enabledTouchTypes.erase(static_cast<Touch::TOUCH_DETECTION_TYPE>(type)) > 0) return;
  ko::log::info(kTouchCategory, "disableTouchType")
      << "Touch type " << type << " already disabled.";
}

std::vector<int> TouchSensor::getEnabledTouchTypes() const {
  std::lock_guard lock(enabledTypesMutex);
  return {enabledTouchTypes.begin(), enabledTouchTypes.end()};
}

bool TouchSensor::xIsTouchTypeEnabled(Touch::TOUCH_DETECTION_TYPE type) const {
  std::lock_guard lock(enabledTypesMutex);
  return enabledTouchTypes.count(type) > 0;
}

std::vector<Math::MetricalData> TouchSensor::xGetData() const {
  std::vector<Math::MetricalData> records;
  // The lock is held during calls of the motion service: a reading shows the groups of one moment.
  ko::detail::CallLock lock(touchedMutex, "a reading", name);
  const std::vector<std::string> groups(touchedGroups.begin(), touchedGroups.end());
  records.reserve(groups.size());
  for (const std::string& group : groups) {
    Math::MetricalData record = xGetMetricalDataMeta();
    record.sensorName = group;
    try {
      record.sensorTransform =
          Math::Transform(motionProxy.getTransform(group, MotionContract::kGroundFrame, true));
    } catch (...) {
      xKeepCaught(ko::log::Level::info, kTouchCategory, "xGetData");
      continue;
    }
    record.points = {Math::Position3D(kPointDepth, 0.0f, 0.0f)};
    records.push_back(std::move(record));
  }
  return records;
}

}  // namespace QV::sensor
