#include <memory>

#include "platform/ko/internal/call_lock.h"
#include "sensor/core/internal/sensor_watch.h"
#include "sensor/core/sensor.h"

namespace QV::sensor {

std::vector<Math::MetricalData> Sensor::getData() const {
  ko::detail::CallLock lock(startedMutex, "Sensor::getData", name);
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

}  // namespace QV::sensor
