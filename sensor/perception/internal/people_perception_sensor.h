#pragma once

#include <cstdint>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include <boost/shared_ptr.hpp>

#include "platform/api.h"
#include "platform/ko/internal/future.h"
#include "platform/middleware/contracts/navigation_contract.h"
#include "platform/middleware/qv_video_device_proxy.h"
#include "sensor/real/real_sensor.h"

namespace QV::sensor {

/**
 * People that a camera sees: one record with a point for each, in the camera's frame. While it is
 * subscribed the event "PeoplePerception/PeopleDetected" reaches the module "QVNavigation", whose
 * method "_onPeopleDetected" forwards it to onUpdatePeopleList. Two seconds after the last event
 * the points are gone. Any thread may call any operation.
 */
class QV_API PeoplePerceptionSensor : public RealSensor {
 public:
  static constexpr auto& fEventName = NavigationContract::kPeopleDetectedEvent;

  /** Throws QVError for a missing module. */
  PeoplePerceptionSensor(const std::string& name, const std::string& familyName,
                         const Math::SensorFieldOfView2D& fieldOfView,
                         const std::vector<std::string>& memoryKeys,
                         boost::shared_ptr<QVBroker> broker);
  ~PeoplePerceptionSensor() override;

  std::vector<Math::MetricalData> getData() const override;

  /**
   * Takes an event as extractPeopleEvent reads it, with the pose that its camera had then. A
   * failure is logged and leaves the last people in place.
   */
  void onUpdatePeopleList(const std::string& key, QVValue value, const std::string& subscriber);

 protected:
  /** Returns one record, without points when nobody was seen lately. */
  std::vector<Math::MetricalData> xGetData() const override;
  bool xSubscribeToHardware() override;
  bool xUnsubscribeFromHardware() override;

 private:
  // State shared with the delayed task that forgets people; it may outlive the sensor.
  struct Latest {
    std::mutex mutex;
    std::optional<Math::MetricalData> lastData;
    // Counts the events: a prune that has started already must not take a newer one's record.
    std::uint64_t generation = 0;
  };

  void xLogError(const char* method, const std::string& message) const;
  Math::Transform xCameraTransform(int camera, ko::Clock::time_point time) const;
  void xStore(Math::MetricalData record);
  static void xPruneOldData(Latest& latest, std::uint64_t generation);

  QVVideoDeviceProxy videoDevice;
  boost::shared_ptr<Latest> latest;
  ko::Duration pruneDelay;
  ko::Future<void> pruneFuture;
};

}  // namespace QV::sensor
