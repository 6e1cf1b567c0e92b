#include "sensor/core/sensor.h"

#include <boost/thread/lock_guard.hpp>

#include "sensor/core/internal/hardware_call.h"
#include "sensor/core/internal/sensor_watch.h"

namespace QV::sensor {
namespace {

using Lock = boost::lock_guard<boost::mutex>;

}  // namespace

Sensor::Sensor(const std::string& name, const std::string& familyName,
               const Math::SensorFieldOfView2D& fieldOfView)
    : name(name), familyName(familyName), fieldOfView(fieldOfView) {}

Sensor::~Sensor() {
  delete watch.load();
}

bool Sensor::subscribe(const std::string& subscriberName) {
  Lock lock(mutex);
  const bool isNew = subscribers.insert(subscriberName).second;
  isWanted = true;
  xToggleSubscription();
  return isNew;
}

bool Sensor::unsubscribe(const std::string& subscriberName) {
  Lock lock(mutex);
  const bool wasPresent = subscribers.erase(subscriberName) > 0;
  isWanted = !subscribers.empty();
  xToggleSubscription();
  return wasPresent;
}

void Sensor::enable(bool value) {
  Lock lock(mutex);
  if (value == enabled) return;
  enabled = value;
  xToggleSubscription();
}

void Sensor::setDiagnosis(bool success) {
  Lock lock(mutex);
  if (success == diagnosisSuccess) return;
  diagnosisSuccess = success;
  xToggleSubscription();
}

std::set<std::string> Sensor::getSubscribers() const {
  Lock lock(mutex);
  return subscribers;
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
  Lock lock(startedMutex);
  isNoted = true;
  started = value;
}

}  // namespace QV::sensor
