#include "sensor/core/internal/sensor_watch.h"

namespace QV::sensor {
namespace {

std::int64_t nowInNs() {
  // 0 stands for never.
  const std::int64_t now = ko::Clock::now().time_since_epoch().count();
  return now == 0 ? 1 : now;
}

constexpr std::size_t kFew = 8;
constexpr int kMostSkipped = 2;
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
  const bool hadRecords = notes.recordAt == notes.readAt;
  notes.failures = 0;
  notes.excuse = records.empty() ? pendingExcuse : nullptr;
  notes.isExcuseMeasured = isPendingMeasured;
  if (!records.empty() || notes.excuse) notes.answeredAt = now;
  notes.garbage = shifted(notes.garbage, pendingGarbage.exchange(false));
  notes.changed = shifted(notes.changed, false);
  notes.readAt = now;
  if (!records.empty()) xNoteRecords(records);
  // What came of a time without records is no change of mind.
  if (!hadRecords) notes.changed &= ~1u;
  published.store(notes);
  readingSince = 0;
}

void SensorWatch::xNoteRecords(const std::vector<Math::MetricalData>& records) {
  if (xSkips(records)) {
    notes.digest.stamp = stampOf(records);
    if (notes.digest.isGarbage) notes.garbage |= 1u;
  } else {
    PlanarView seen;
    const ReadingDigest digest = digestOf(records, nature, lastView, seen);
    xNoteDigest(digest, seen);
  }
  notes.recordAt = notes.readAt;
}

// To look at many points costs time, and every third time tells as much; the first one must.
bool SensorWatch::xSkips(const std::vector<Math::MetricalData>& records) {
  const bool isCheap = nature.points == Model::PointMeaning::arc || countPoints(records) <= kFew;
  const bool skips = notes.recordAt != 0 && !isCheap && skipped < kMostSkipped;
  skipped = skips ? skipped + 1 : 0;
  return skips;
}

void SensorWatch::xNoteDigest(const ReadingDigest& digest, const PlanarView& seen) {
  const bool isFirst = notes.recordAt == 0;
  const bool isChanged = !isFirst && digest.fingerprint != notes.digest.fingerprint;
  if (isFirst || isChanged) ++notes.changes;
  if (isChanged) notes.changed |= 1u;
  if (digest.isGarbage) notes.garbage |= 1u;
  if (isFirst || digest.stamp != lastStamp) {
    ++notes.stamps;
    notes.stampedAt = notes.readAt;
  }
  lastStamp = digest.stamp;
  notes.digest = digest;
  if (seen.isEmpty() && !notes.hasView) return;
  notes.hasView = !seen.isEmpty();
  notes.axisX = seen.getAxisX();
  notes.axisY = seen.getAxisY();
  lastView = seen;
  view.store(seen);
}

void SensorWatch::failReading() {
  notes.readAt = nowInNs();
  ++notes.failures;
  published.store(notes);
  readingSince = 0;
}

}  // namespace QV::sensor
