#include "sensor/core/sensor.h"

#include "platform/ko/internal/call_lock.h"
#include "sensor/core/internal/hardware_call.h"
#include "sensor/core/internal/sensor_watch.h"

namespace QV::sensor {
namespace {

using Lock = ko::detail::CallLock<boost::mutex>;

constexpr char kTheStop[] = "the stop";

}  // namespace

Sensor::Sensor(const std::string& name, const std::string& familyName,
               const Math::SensorFieldOfView2D& fieldOfView)
    : name(name), familyName(familyName), fieldOfView(fieldOfView) {}

Sensor::~Sensor() {
  delete watch.load();
}

bool Sensor::subscribe(const std::string& subscriberName) {
  Lock lock(mutex, "Sensor::subscribe", name);
  const bool isNew = subscribers.insert(subscriberName).second;
  isWanted = true;
  xToggleSubscription();
  return isNew;
}

bool Sensor::unsubscribe(const std::string& subscriberName) {
  Lock lock(mutex, "Sensor::unsubscribe", name);
  xCheckMayStop(subscribers.size() > subscribers.count(subscriberName));
  const bool wasPresent = subscribers.erase(subscriberName) > 0;
  isWanted = !subscribers.empty();
  xToggleSubscription();
  return wasPresent;
}

void Sensor::enable(bool value) {
  Lock lock(mutex, "Sensor::enable", name);
  if (value == enabled) return;
  xCheckMayStop(value);
  enabled = value;
  xToggleSubscription();
}

void Sensor::setDiagnosis(bool success) {
  Lock lock(mutex, "Sensor::setDiagnosis", name);
  if (success == diagnosisSuccess) return;
  xCheckMayStop(success);
  diagnosisSuccess = success;
  xToggleSubscription();
}

std::set<std::string> Sensor::getSubscribers() const {
  // Inside a start or stop on this thread nobody else changes them.
  if (ko::detail::isHeldHere(&mutex)) return subscribers;
  Lock lock(mutex, "Sensor::getSubscribers", name);
  return subscribers;
}

// A stop waits for the reading in progress. If that is on this thread, nothing changes.
void Sensor::xCheckMayStop(bool staysWanted) const {
  if (started && !staysWanted) ko::detail::refuseSecond({&startedMutex, kTheStop, &name});
}

void Sensor::xToggleSubscription() {
  const bool wanted = diagnosisSuccess && !subscribers.empty() && enabled;
  if (wanted == started) return;
  if (wanted) {
    xStart();
  } else {
    xStop();
  }
}

// The flag is set after the hardware has started and cleared before it stops, so that a reader
// never measures with hardware that is off.
void Sensor::xStart() {
  if (!xCallHardware(HardwareCall::starting)) {
    diagnosisSuccess = false;
    return;
  }
  xSetStarted(true);
}

void Sensor::xStop() {
  xSetStarted(false);
  if (!xCallHardware(HardwareCall::stopping)) {
    diagnosisSuccess = false;
  }
}

void Sensor::xSetStarted(bool value) {
  Lock lock(startedMutex, value ? "the start" : kTheStop, name);
  isNoted = true;
  started = value;
}

}  // namespace QV::sensor
