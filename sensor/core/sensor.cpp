#include "sensor/core/sensor.h"

#include <boost/thread/lock_guard.hpp>

#include "sensor/core/internal/sensor_scope.h"

namespace QV::sensor {

typedef boost::lock_guard<boost::mutex> Lock;

Sensor::Sensor(const std::string& name, const std::string& familyName,
               const Math::SensorFieldOfView2D& fieldOfView)
    : name(name), familyName(familyName), fieldOfView(fieldOfView) {}

Sensor::~Sensor() = default;

std::vector<Math::MetricalData> Sensor::getData() const {
  Lock lock(startedMutex);
  if (!started) return {};
  const SensorScope scope(name);
  return xGetData();
}

bool Sensor::subscribe(const std::string& subscriberName) {
  Lock lock(mutex);
  const bool isNew = subscribers.insert(subscriberName).second;
  xToggleSubscription();
  return isNew;
}

bool Sensor::unsubscribe(const std::string& subscriberName) {
  Lock lock(mutex);
  const bool wasPresent = subscribers.erase(subscriberName) > 0;
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

// The hardware runs before the flag says so, and until after it has stopped saying so: a reader
// never measures with hardware that is off.
void Sensor::xStart() {
  const SensorScope scope(name);
  if (!xSubscribeToHardware()) {
    diagnosisSuccess = false;
    return;
  }
  xSetStarted(true);
}

void Sensor::xStop() {
  const SensorScope scope(name);
  xSetStarted(false);
  if (!xUnsubscribeFromHardware()) diagnosisSuccess = false;
}

void Sensor::xSetStarted(bool value) {
  Lock lock(startedMutex);
  started = value;
}

}  // namespace QV::sensor
