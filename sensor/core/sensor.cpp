#include "sensor/core/sensor.h"

#include <exception>
#include <utility>

#include <boost/thread/lock_guard.hpp>

namespace QV::sensor {
namespace {

using Lock = boost::lock_guard<boost::mutex>;

constexpr char kSensorCategory[] = "Navigation.Sensor";

}  // namespace

Sensor::Sensor(const std::string& name, const std::string& familyName,
               const Math::SensorFieldOfView2D& fieldOfView)
    : name(name), familyName(familyName), fieldOfView(fieldOfView) {}

Sensor::~Sensor() = default;

std::vector<Math::MetricalData> Sensor::getData() const {
  Lock lock(startedMutex);
  if (!started) return {};
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
  if (!xCallHardware(&Sensor::xSubscribeToHardware, "xSubscribeToHardware")) {
    diagnosisSuccess = false;
    return;
  }
  xSetStarted(true);
}

void Sensor::xStop() {
  xSetStarted(false);
  if (!xCallHardware(&Sensor::xUnsubscribeFromHardware, "xUnsubscribeFromHardware")) {
    diagnosisSuccess = false;
  }
}

// Hardware that fails without a word has trouble all the same.
bool Sensor::xCallHardware(bool (Sensor::*call)(), const char* method) {
  const auto count = [this] {
    std::lock_guard<std::mutex> lock(troubleMutex);
    return troubleCount;
  };
  const int before = count();
  try {
    if ((this->*call)()) return true;
  } catch (...) {
    xKeepCaught(kSensorCategory, method);
    throw;
  }
  if (count() == before) keepTrouble(kSensorCategory, method, "The hardware failed.");
  return false;
}

void Sensor::xSetStarted(bool value) {
  Lock lock(startedMutex);
  started = value;
}

std::optional<ko::log::Record> Sensor::getLastTrouble() const {
  std::lock_guard<std::mutex> lock(troubleMutex);
  return lastTrouble;
}

void Sensor::logTrouble(ko::log::Level level, std::string_view category, std::string_view method,
                        const std::string& message) const {
  xKeep({level, std::string(category), std::string(method), message, ko::Clock::now()});
  ko::log::write(level, category, method, message);
}

void Sensor::keepTrouble(std::string_view category, std::string_view method,
                         const std::string& message) const {
  xKeep({ko::log::Level::error, std::string(category), std::string(method), message,
         ko::Clock::now()});
}

void Sensor::xKeepCaught(std::string_view category, std::string_view method) const {
  try {
    throw;
  } catch (const std::exception& exception) {
    keepTrouble(category, method, exception.what());
  } catch (...) {
    keepTrouble(category, method, "not a standard exception");
  }
}

void Sensor::xKeep(ko::log::Record record) const {
  std::lock_guard<std::mutex> lock(troubleMutex);
  lastTrouble = std::move(record);
  ++troubleCount;
}

}  // namespace QV::sensor
