#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include <boost/thread/mutex.hpp>

#include "platform/api.h"
#include "platform/ko/log.h"
#include "platform/math/metrical_data.h"

namespace QV::sensor {

class HealthBoard;
class SensorWatch;
enum class HardwareCall : std::uint8_t;

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

  /**
   * Why it fails: the last warning or error on its behalf, with its time, or what its hardware
   * threw; if there is none, what it last passed over in silence, at info. Stays after a repair.
   * Never waits for hardware.
   */
  std::optional<ko::log::Record> getLastTrouble() const;

  /**
   * Writes a line to the log on the sensor's behalf and keeps it as its last trouble, also when the
   * log does not want it. For warnings and errors.
   */
  void logTrouble(ko::log::Level level, std::string_view category, std::string_view method,
                  const std::string& message) const;
  /**
   * Keeps a last trouble without a line in the log. One at info, such as a value that is not there
   * yet, takes the place of others at info only.
   */
  void keepTrouble(ko::log::Level level, std::string_view category, std::string_view method,
                   const std::string& message) const;

  bool isEnabled() const { return enabled; }
  bool isDiagnosisSucess() const { return diagnosisSuccess; }
  bool isStarted() const { return started; }

 protected:
  /**
   * For a measuring that gives no record: why that is no fault, as a text that lasts, and whether
   * it measured all the same.
   */
  void xExcuse(const char* why, bool measured = false) const;
  /** Something that came in could not be read as a measurement: too many make it noisy. */
  void xNoteGarbage() const;
  /** Its records tell of changes only, and may grow old. For constructors. */
  void xTellOfChanges();
  /** keepTrouble with what the exception says that is being handled. */
  void xKeepCaught(ko::log::Level level, std::string_view category, std::string_view method) const;

  std::string name;
  std::string familyName;
  Math::SensorFieldOfView2D fieldOfView;

 private:
  friend class HealthBoard;

  void xToggleSubscription();
  void xStart();
  void xStop();
  bool xCallHardware(HardwareCall which);
  bool xTryHardware(HardwareCall which);
  void xKeep(ko::log::Record record) const;
  void xSetStarted(bool value);
  void xWatch(bool on) const;
  bool xNotesNext() const;

  // What a reading touches stands together, before what it does not.
  std::atomic<bool> started{false};
  std::atomic<bool> enabled{true};
  std::atomic<bool> diagnosisSuccess{true};
  /** Whether there are subscribers, for those who must not wait. */
  std::atomic<bool> isWanted{false};
  /** Whether the watch may want the next reading. */
  mutable std::atomic<bool> isNoted{true};
  mutable boost::mutex startedMutex;
  const std::unique_ptr<SensorWatch> watch;
  std::set<std::string> subscribers;
  mutable boost::mutex mutex;
  mutable std::unique_ptr<ko::log::Record> lastTrouble;
  mutable int troubleCount = 0;
  mutable std::mutex troubleMutex;
};

}  // namespace QV::sensor
