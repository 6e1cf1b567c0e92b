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
 * One sensor: its name, its family, its subscribers, and the state of its hardware.
 *
 * The hardware runs while three things hold: somebody has subscribed, the sensor is enabled, and
 * its diagnosis is good. Most users need only SensorManager. To add a sensor, derive from this
 * class and implement xGetData(), xSubscribeToHardware() and xUnsubscribeFromHardware().
 * - Frames: S is the sensor's frame, x the direction in which it looks, y to the left, z up. Points
 *   are in S, those of simulated sensors in the ground frame; a record's transform places S in the
 *   ground frame or, simulated, in the map.
 * - Units: metres, radians, nanoseconds of ko::Clock.
 * - Special values: no record means that nothing was read or, from a sensor of events such as
 *   touches, that there is nothing to report. A record without points means that nothing is in
 *   range; a hole laser's, that its measurement can't be trusted.
 * - Lifetime: not copyable. The destructor does not stop the hardware; unsubscribe first.
 * - Threads: thread-safe. Hardware is started, stopped and read by one thread at a time.
 * - Errors: an exception of the hardware reaches the caller. A start or stop that returns false
 *   sets the diagnosis to bad; the sensor then stays off until setDiagnosis(true).
 *
 *     class Whisker : public QV::sensor::Sensor {
 *      public:
 *       Whisker() : Sensor("Whisker", "Whisker", {0.0f, 0.1f, 0.0f, 1}) {}
 *
 *      protected:
 *       bool xSubscribeToHardware() override { return true; }
 *       bool xUnsubscribeFromHardware() override { return true; }
 *       std::vector<QV::Math::MetricalData> xGetData() const override {
 *         return {{name, familyName, fieldOfView, {}, {{0.05f, 0.0f, 0.0f}}, ko::Clock::now()}};
 *       }
 *     };
 */
class QV_API Sensor {
 public:
  /** Creates a stopped sensor that is enabled and has a good diagnosis. `fieldOfView` is in metres
   * and radians, about the x axis of S. */
  Sensor(const std::string& name, const std::string& familyName,
         const Math::SensorFieldOfView2D& fieldOfView);
  virtual ~Sensor();
  Sensor(const Sensor&) = delete;
  Sensor& operator=(const Sensor&) = delete;

  /** Measures; empty while the hardware does not run. May wait for another getData() of this
   * sensor, never for a start or a stop. */
  virtual std::vector<Math::MetricalData> getData() const;

 protected:
  /** Measures. Called only while the sensor is started, by one thread at a time. */
  virtual std::vector<Math::MetricalData> xGetData() const = 0;
  /** Starts the hardware; false if that failed. May block: readers do not wait for it. */
  virtual bool xSubscribeToHardware() = 0;
  /** Stops the hardware; false if that failed. May block, too. */
  virtual bool xUnsubscribeFromHardware() = 0;

 public:
  /** Adds a subscriber; false if it has subscribed already. Starts the hardware if it may run and
   * does not, also for a known subscriber: a start that threw is tried again. A start that returns
   * false does not change the result; it sets the diagnosis to bad. */
  bool subscribe(const std::string& subscriberName);
  /** Removes a subscriber; false if it had not subscribed. The last one stops the hardware. */
  bool unsubscribe(const std::string& subscriberName);

  /** A disabled sensor stops and keeps its subscribers. */
  void enable(bool value);
  /** Sets the diagnosis. A bad one stops the sensor; a good one lets a failed sensor try again. */
  void setDiagnosis(bool success);

  std::string getName() const { return name; }
  std::string getFamilyName() const { return familyName; }
  /** Waits for hardware that starts or stops. */
  std::set<std::string> getSubscribers() const;

  /** The last error of the sensor, with its time: a logged warning or error, or an exception of its
   * hardware; without these, a problem that was only kept, at level info. A repair does not clear
   * it. Never waits for hardware. */
  std::optional<ko::log::Record> getLastTrouble() const;

  /** Logs a warning or an error and keeps it as the last error, even if the log drops it. */
  void logTrouble(ko::log::Level level, std::string_view category, std::string_view method,
                  const std::string& message) const;
  /** Keeps a last error without a line in the log. Level info, for example for a value that is not
   * there yet, replaces neither a warning nor an error. */
  void keepTrouble(ko::log::Level level, std::string_view category, std::string_view method,
                   const std::string& message) const;

  /** These never wait. The interface spells isDiagnosisSucess with one c. */
  bool isEnabled() const { return enabled; }
  bool isDiagnosisSucess() const { return diagnosisSuccess; }
  bool isStarted() const { return started; }

 protected:
  /** Tells why a reading without a record is no error. `why` must have static lifetime; `measured`
   * is true if the hardware did measure, but saw nothing to report. */
  void xExcuse(const char* why, bool measured = false) const;
  /** Counts a measurement that could not be read. Too many set the health to noisy. */
  void xNoteGarbage() const;
  /** Declares that the sensor reports changes only: its records may be old. For constructors. */
  void xTellOfChanges();
  /** Calls keepTrouble() with the text of the current exception. For catch blocks. */
  void xKeepCaught(ko::log::Level level, std::string_view category, std::string_view method) const;

  std::string name;
  std::string familyName;
  Math::SensorFieldOfView2D fieldOfView;

 private:
  friend class HealthBoard;

  void xCheckMayStop(bool staysWanted) const;
  void xToggleSubscription();
  void xStart();
  void xStop();
  bool xCallHardware(HardwareCall which);
  bool xTryHardware(HardwareCall which);
  void xEndCall(bool success, bool threw);
  void xBeginNotes();
  void xKeep(ko::log::Record record) const;
  void xSetStarted(bool value);
  void xWatch(bool on) const;
  SensorWatch& xGetWatch() const;
  bool xNotesNext(const SensorWatch& notes) const;
  std::vector<Math::MetricalData> xReadWatched(SensorWatch& notes) const;
  std::vector<Math::MetricalData> xReadUnwatched() const;

  std::set<std::string> subscribers;
  mutable boost::mutex mutex;
  mutable std::unique_ptr<ko::log::Record> lastTrouble;
  mutable int troubleCount = 0;
  // Members used by a reading come last, next to those of derived classes.
  /** Null until the sensor's health is watched; owned. */
  mutable std::atomic<SensorWatch*> watch{nullptr};
  std::atomic<bool> enabled{true};
  std::atomic<bool> diagnosisSuccess{true};
  /** True if there are subscribers; read without the mutex. */
  std::atomic<bool> isWanted{false};
  std::atomic<bool> started{false};
  /** The call that the hardware is busy with, and its start, ns. */
  std::atomic<HardwareCall> call{};
  std::atomic<std::int64_t> callSince{0};
  /** True if the last stop failed; true if the last start threw. */
  std::atomic<bool> leftOn{false};
  std::atomic<bool> hasThrown{false};
  /** True if a reading since the start had records that nobody watched. */
  mutable std::atomic<bool> hasShown{false};
  /** True if a SensorWatch may want the next reading. */
  mutable std::atomic<bool> isNoted{false};
  mutable boost::mutex startedMutex;
};

}  // namespace QV::sensor
