#include "sensor/core/internal/sensor_watch.h"

namespace QV::sensor {
namespace {

std::int64_t nowInNs() {
  // 0 stands for never.
  const std::int64_t now = ko::Clock::now().time_since_epoch().count();
  return now == 0 ? 1 : now;
}

constexpr std::uint32_t kWindowMask = (1u << SensorWatch::kWindow) - 1;

std::uint32_t shifted(std::uint32_t bits, bool newest) {
  return (bits << 1 | (newest ? 1u : 0u)) & kWindowMask;
}

}  // namespace

void SensorWatch::beginCall(HardwareCall newCall) {
  callSince = nowInNs();
  call = newCall;
  // Until it has said that it stopped.
  if (newCall == HardwareCall::stopping) return;
  thrown = false;
}

void SensorWatch::endCall(HardwareCall ended, bool success, bool threw) {
  if (ended == HardwareCall::stopping) {
    leftOn = !success;
  } else {
    thrown = threw;
    if (success) {
      leftOn = false;
      notes = ReadingNotes();
      notes.startedAt = nowInNs();
      pendingGarbage = false;
      published.store(notes);
    }
  }
  call = HardwareCall::none;
}

void SensorWatch::excuse(const char* why, bool measured) {
  pendingExcuse = why;
  isPendingMeasured = measured;
}

void SensorWatch::beginReading() {
  pendingExcuse = nullptr;
  readingSince = nowInNs();
}

void SensorWatch::endReading(const std::vector<Math::MetricalData>& records) {
  const std::int64_t now = nowInNs();
  notes.readAt = now;
  notes.failures = 0;
  notes.excuse = records.empty() ? pendingExcuse : nullptr;
  notes.isExcuseMeasured = isPendingMeasured;
  if (!records.empty() || notes.excuse) notes.answeredAt = now;
  bool isGarbage = pendingGarbage.exchange(false);
  if (!records.empty()) {
    const ReadingDigest digest = digestOf(records, nature);
    isGarbage = isGarbage || digest.isGarbage;
    xNoteRecords(digest, now);
  }
  notes.garbage = shifted(notes.garbage, isGarbage);
  published.store(notes);
  readingSince = 0;
}

void SensorWatch::xNoteRecords(const ReadingDigest& digest, std::int64_t now) {
  const bool isFirst = notes.recordAt == 0;
  const bool isChanged = !isFirst && digest.fingerprint != notes.digest.fingerprint;
  notes.changed = shifted(notes.changed, isChanged);
  if (isFirst || isChanged) ++notes.changes;
  if (isFirst || digest.stamp != notes.digest.stamp) {
    ++notes.stamps;
    notes.stampedAt = now;
  }
  notes.recordAt = now;
  notes.digest = digest;
}

void SensorWatch::failReading() {
  notes.readAt = nowInNs();
  ++notes.failures;
  published.store(notes);
  readingSince = 0;
}

}  // namespace QV::sensor
