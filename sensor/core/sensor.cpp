#include "sensor/core/sensor.h"

#include <exception>
#include <utility>

#include <boost/thread/lock_guard.hpp>

#include "platform/ko/clock.h"
#include "sensor/core/internal/hardware_call.h"
#include "sensor/core/internal/sensor_watch.h"

namespace QV::sensor {
namespace {

using Lock = boost::lock_guard<boost::mutex>;

constexpr char kSensorCategory[] = "Navigation.Sensor";

// One for all sensors: trouble is rare, and many sensors lie side by side.
std::mutex& troubleMutex() {
  static std::mutex mutex;
  return mutex;
}

}  // namespace

Sensor::Sensor(const std::string& name, const std::string& familyName,
               const Math::SensorFieldOfView2D& fieldOfView)
    : name(name), familyName(familyName), fieldOfView(fieldOfView) {}

Sensor::~Sensor() {
  delete watch.load();
}

std::vector<Math::MetricalData> Sensor::getData() const {
  Lock lock(startedMutex);
  if (!started) return {};
  if (!isNoted) return xGetData();
  SensorWatch* const notes = watch;
  if (!notes) return xReadUnwatched();
  return xNotesNext(*notes) ? xReadWatched(*notes) : xGetData();
}

std::vector<Math::MetricalData> Sensor::xReadWatched(SensorWatch& notes) const {
  notes.beginReading();
  try {
    auto records = xGetData();
    notes.endReading(records);
    return records;
  } catch (...) {
    notes.failReading();
    throw;
  }
}

// All that is known of a sensor if somebody asks later.
std::vector<Math::MetricalData> Sensor::xReadUnwatched() const {
  auto records = xGetData();
  if (records.empty()) return records;
  hasShown = true;
  isNoted = false;
  // Somebody may have begun to watch in between; who begins later sets it after this.
  if (watch != nullptr) isNoted = true;
  return records;
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

bool Sensor::xCallHardware(HardwareCall which) {
  callSince = ko::Clock::now().time_since_epoch().count();
  call = which;
  if (which == HardwareCall::starting) hasThrown = false;
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

void Sensor::xExcuse(const char* why, bool measured) const {
  if (SensorWatch* const notes = watch) notes->excuse(why, measured);
}

void Sensor::xNoteGarbage() const {
  if (SensorWatch* const notes = watch) notes->noteGarbage();
}

void Sensor::xTellOfChanges() {
  HealthNature nature = xGetWatch().getNature();
  nature.hasRate = false;
  xGetWatch().setNature(nature);
}

void Sensor::xSetStarted(bool value) {
  Lock lock(startedMutex);
  isNoted = true;
  started = value;
}

void Sensor::xWatch(bool on) const {
  if (!on && !watch) return;
  xGetWatch().setOn(on);
  isNoted = true;
}

// A sensor that runs already is taken for one that has just been started, or just been read.
SensorWatch& Sensor::xGetWatch() const {
  if (SensorWatch* const known = watch) return *known;
  auto fresh = std::make_unique<SensorWatch>();
  fresh->begin(hasShown);
  SensorWatch* known = nullptr;
  return watch.compare_exchange_strong(known, fresh.get()) ? *fresh.release() : *known;
}

// The watch lies elsewhere: of many sensors that nobody watches, it would not be in the cache.
bool Sensor::xNotesNext(const SensorWatch& notes) const {
  if (notes.notesNext()) return true;
  isNoted = false;
  // As above.
  if (!notes.notesNext()) return false;
  isNoted = true;
  return true;
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
