#pragma once

#include <atomic>
#include <set>
#include <string>
#include <vector>

#include <boost/thread/mutex.hpp>

#include "platform/api.h"
#include "platform/math/metrical_data.h"

namespace QV::sensor {

/**
 * One sensor: who it is, who wants its data, and whether its hardware runs. The hardware is
 * subscribed while somebody has subscribed, the sensor is enabled and its diagnosis is good, and
 * only then. Not copyable. Any thread may call any operation; what the hardware throws reaches the
 * caller. The destructor does not stop the hardware.
 */
class QV_API Sensor {
 public:
  /** `fieldOfView` in metres and radians, about the x axis of the sensor's frame. */
  Sensor(const std::string& name, const std::string& familyName,
         const Math::SensorFieldOfView2D& fieldOfView);
  virtual ~Sensor();
  Sensor(const Sensor&) = delete;
  Sensor& operator=(const Sensor&) = delete;

  /**
   * The current measurements; empty while the hardware does not run. Waits for another reading of
   * this sensor, never for hardware that starts or stops.
   */
  virtual std::vector<Math::MetricalData> getData() const;

 protected:
  /** Measures. Called only while the sensor is started, by one thread at a time. */
  virtual std::vector<Math::MetricalData> xGetData() const = 0;
  /** Starts the hardware; false when that failed. Called by one thread at a time. */
  virtual bool xSubscribeToHardware() = 0;
  /** Stops the hardware; false when that failed. Called by one thread at a time. */
  virtual bool xUnsubscribeFromHardware() = 0;

 public:
  /**
   * Adds a subscriber; false if it is one already. The first one starts the hardware: a failure of
   * that is not told here but clears the diagnosis.
   */
  bool subscribe(const std::string& subscriberName);
  /** Removes a subscriber; false if it is none. The last one stops the hardware. */
  bool unsubscribe(const std::string& subscriberName);

  /** A disabled sensor stops and keeps its subscribers. */
  void enable(bool value);
  /** A false diagnosis stops the sensor; setting it to true again lets a failed one try again. */
  void setDiagnosis(bool success);

  std::string getName() const { return name; }
  std::string getFamilyName() const { return familyName; }
  std::set<std::string> getSubscribers() const;

  bool isEnabled() const { return enabled; }
  bool isDiagnosisSucess() const { return diagnosisSuccess; }
  bool isStarted() const { return started; }

 protected:
  std::string name;
  std::string familyName;
  Math::SensorFieldOfView2D fieldOfView;

 private:
  void xToggleSubscription();
  void xStart();
  void xStop();
  void xSetStarted(bool value);

  std::set<std::string> subscribers;
  std::atomic<bool> enabled{true};
  mutable boost::mutex mutex;
  std::atomic<bool> diagnosisSuccess{true};
  std::atomic<bool> started{false};
  mutable boost::mutex startedMutex;
};

}  // namespace QV::sensor
