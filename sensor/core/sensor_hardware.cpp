#include <exception>
#include <memory>
#include <mutex>
#include <utility>

#include "platform/ko/clock.h"
#include "sensor/core/internal/hardware_call.h"
#include "sensor/core/internal/sensor_watch.h"
#include "sensor/core/sensor.h"

namespace QV::sensor {
namespace {

constexpr char kSensorCategory[] = "Navigation.Sensor";

// One for all sensors: trouble is rare, and many sensors lie side by side.
std::mutex& troubleMutex() {
  static std::mutex mutex;
  return mutex;
}

}  // namespace

bool Sensor::xCallHardware(HardwareCall which) {
  callSince = ko::Clock::now().time_since_epoch().count();
  call = which;
  if (SensorWatch* const notes = watch) notes->alarm();
  try {
    const bool success = xTryHardware(which);
    xEndCall(success, false);
    return success;
  } catch (...) {
    xEndCall(false, true);
    throw;
  }
}

void Sensor::xEndCall(bool success, bool threw) {
  if (call == HardwareCall::stopping) {
    leftOn = !success;
  } else {
    hasThrown = threw;
    if (success) xBeginNotes();
  }
  call = HardwareCall::none;
}

void Sensor::xBeginNotes() {
  leftOn = false;
  hasShown = false;
  if (SensorWatch* const notes = watch) notes->begin();
}

// Hardware that fails without a word has trouble all the same.
bool Sensor::xTryHardware(HardwareCall which) {
  const bool starts = which == HardwareCall::starting;
  const char* const method = starts ? "xSubscribeToHardware" : "xUnsubscribeFromHardware";
  const auto count = [this] {
    std::lock_guard<std::mutex> lock(troubleMutex());
    return troubleCount;
  };
  const int before = count();
  try {
    if (starts ? xSubscribeToHardware() : xUnsubscribeFromHardware()) return true;
  } catch (...) {
    xKeepCaught(ko::log::Level::error, kSensorCategory, method);
    throw;
  }
  if (count() == before)
    keepTrouble(ko::log::Level::error, kSensorCategory, method, "The hardware failed.");
  return false;
}

std::optional<ko::log::Record> Sensor::getLastTrouble() const {
  std::lock_guard<std::mutex> lock(troubleMutex());
  return lastTrouble ? std::optional(*lastTrouble) : std::nullopt;
}

void Sensor::logTrouble(ko::log::Level level, std::string_view category, std::string_view method,
                        const std::string& message) const {
  xKeep({level, std::string(category), std::string(method), message, ko::Clock::now()});
  ko::log::write(level, category, method, message);
}

void Sensor::keepTrouble(ko::log::Level level, std::string_view category, std::string_view method,
                         const std::string& message) const {
  xKeep({level, std::string(category), std::string(method), message, ko::Clock::now()});
}

void Sensor::xKeepCaught(ko::log::Level level, std::string_view category,
                         std::string_view method) const {
  try {
    throw;
  } catch (const std::exception& exception) {
    keepTrouble(level, category, method, exception.what());
  } catch (...) {
    keepTrouble(level, category, method, "not a standard exception");
  }
}

void Sensor::xKeep(ko::log::Record record) const {
  using ko::log::Level;
  std::lock_guard<std::mutex> lock(troubleMutex());
  ++troubleCount;
  if (record.level > Level::warning && lastTrouble && lastTrouble->level <= Level::warning) return;
  lastTrouble = std::make_unique<ko::log::Record>(std::move(record));
}

}  // namespace QV::sensor
