#pragma once

#include <mutex>
#include <set>
#include <string>
#include <vector>

#include "platform/api.h"
#include "sensor/perception/internal/touch_event.h"
#include "sensor/real/real_sensor.h"

namespace QV::sensor {

/**
 * Bumpers, skin and joints that feel a contact. Each touched group of the body is a record under
 * the group's name, with one point in the group's frame. The event "TouchChanged" reaches the
 * module "QVNavigation", whose method "_onTouchChanged" forwards it to onTouchChanged; the sensor
 * follows it all its life, subscribed or not. Any thread may call any operation.
 */
class QV_API TouchSensor : public RealSensor {
 public:
  /** Subscribes to the event. Logs and rethrows an exception. */
  TouchSensor(const std::string& name, const std::string& familyName,
              boost::shared_ptr<QVBroker> broker, const Math::SensorFieldOfView2D& fieldOfView);
  ~TouchSensor() override;

  /**
   * Takes an event as extractTouchEventInfo reads it. A group counts as touched from an event with
   * an enabled type until an event releases it. A malformed event is logged and changes nothing.
   */
  void onTouchChanged(const std::string& event, QVValue value,
                      const std::string& subscriberIdentifier);

  /** TACTILE, BUMPER and JOINT at first; any number goes. Groups touched already stay so. */
  void enableTouchType(int type);
  void disableTouchType(int type);
  /** Returns the types in ascending order. */
  std::vector<int> getEnabledTouchTypes() const;

 protected:
  bool xIsTouchTypeEnabled(Touch::TOUCH_DETECTION_TYPE type) const;
  /** A group whose transform is not to be had is left out. */
  std::vector<Math::MetricalData> xGetData() const override;
  bool xSubscribeToHardware() override { return true; }
  bool xUnsubscribeFromHardware() override { return true; }

 private:
  void xUpdate(const Touch::TouchGroupEvent& group);

  std::string eventName;
  /** Taken before the other one. */
  mutable std::mutex touchedMutex;
  std::set<std::string> touchedGroups;
  std::set<Touch::TOUCH_DETECTION_TYPE> enabledTouchTypes;
  mutable std::mutex enabledTypesMutex;
};

}  // namespace QV::sensor
