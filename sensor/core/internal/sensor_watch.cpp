#include "sensor/core/internal/sensor_watch.h"

#include "platform/ko/internal/time_source.h"

namespace QV::sensor {
namespace {

// 0 stands for never.
std::int64_t notedAs(ko::Clock::time_point time) {
  const std::int64_t now = time.time_since_epoch().count();
  return now == 0 ? 1 : now;
}

std::int64_t nowInNs() {
  return notedAs(ko::Clock::now());
}

// Limits are many times as long: who reads oftener pays for a look no oftener.
constexpr std::int64_t kLookPeriod = 50'000'000;
// How much too early a coarse time may be.
constexpr std::int64_t kCoarse = 10'000'000;
constexpr std::size_t kFew = 8;
constexpr int kMostSkipped = 2;
constexpr std::uint32_t kWindowMask = (1u << SensorWatch::kWindow) - 1;

std::uint32_t shifted(std::uint32_t bits, bool newest) {
  return (bits << 1 | (newest ? 1u : 0u)) & kWindowMask;
}

}  // namespace

const SensorWatch::Ledger& SensorWatch::xGet() const {
  static const Ledger empty;
  const Ledger* const own = ledger.load(std::memory_order_acquire);
  return own ? *own : empty;
}

void SensorWatch::beginCall(HardwareCall newCall) {
  if (!ledger.load()) ledger = new Ledger;
  Ledger& book = *ledger;
  book.callSince = nowInNs();
  book.call = newCall;
  // Until it has said that it stopped.
  if (newCall == HardwareCall::stopping) return;
  book.thrown = false;
}

void SensorWatch::endCall(HardwareCall ended, bool success, bool threw) {
  Ledger& book = *ledger;
  if (ended == HardwareCall::stopping) {
    book.leftOn = !success;
  } else {
    book.thrown = threw;
    if (success) {
      book.leftOn = false;
      book.notes = ReadingNotes();
      book.notes.startedAt = nowInNs();
      pendingGarbage = false;
      isOrdinary = false;
      isFirstAwaited = nature.hasRate;
      book.published.store(book.notes);
    }
  }
  book.call = HardwareCall::none;
}

void SensorWatch::excuse(const char* why, bool measured) {
  pendingExcuse = why;
  isPendingMeasured = measured;
}

void SensorWatch::beginReading() {
  pendingExcuse = nullptr;
  readingSince.store(notedAs(ko::detail::coarseNow()), std::memory_order_release);
}

// A reading like the one just before tells nothing new.
bool SensorWatch::xIsTooSoon(const std::vector<Math::MetricalData>& records) const {
  if (!isOrdinary || records.empty() || pendingGarbage) return false;
  const std::int64_t passed = readingSince.load(std::memory_order_relaxed) - lookedAt;
  return passed != 0 && passed > -kCoarse && passed < kLookPeriod;
}

void SensorWatch::endReading(const std::vector<Math::MetricalData>& records) {
  if (xIsTooSoon(records)) return xEndReading();
  const std::int64_t now = nowInNs();
  ReadingNotes& notes = ledger.load()->notes;
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
  ledger.load()->published.store(notes);
  if (notes.stamps > 1) isFirstAwaited = false;
  isOrdinary = !records.empty();
  lookedAt = now;
  xEndReading();
}

void SensorWatch::xNoteRecords(const std::vector<Math::MetricalData>& records) {
  ReadingNotes& notes = ledger.load()->notes;
  if (xSkips(records)) {
    notes.digest.stamp = stampOf(records);
    if (notes.digest.isGarbage) notes.garbage |= 1u;
  } else {
    PlanarView seen;
    const ReadingDigest digest = digestOf(records, nature, ledger.load()->lastView, seen);
    xNoteDigest(digest, seen);
  }
  notes.recordAt = notes.readAt;
}

// To look at many points costs time, and every third time tells as much; the first one must.
bool SensorWatch::xSkips(const std::vector<Math::MetricalData>& records) {
  Ledger& book = *ledger;
  const bool isCheap = nature.points == Model::PointMeaning::arc || countPoints(records) <= kFew;
  const bool skips = book.notes.recordAt != 0 && !isCheap && book.skipped < kMostSkipped;
  book.skipped = skips ? book.skipped + 1 : 0;
  return skips;
}

void SensorWatch::xNoteDigest(const ReadingDigest& digest, const PlanarView& seen) {
  Ledger& book = *ledger;
  ReadingNotes& notes = book.notes;
  const bool isFirst = notes.recordAt == 0;
  const bool isChanged = !isFirst && digest.fingerprint != notes.digest.fingerprint;
  if (isFirst || isChanged) ++notes.changes;
  if (isChanged) notes.changed |= 1u;
  if (digest.isGarbage) notes.garbage |= 1u;
  if (isFirst || digest.stamp != book.lastStamp) {
    ++notes.stamps;
    notes.stampedAt = notes.readAt;
  }
  book.lastStamp = digest.stamp;
  notes.digest = digest;
  if (seen.isEmpty() && !notes.hasView) return;
  notes.hasView = !seen.isEmpty();
  notes.axisX = seen.getAxisX();
  notes.axisY = seen.getAxisY();
  book.lastView = seen;
  book.view.store(seen);
}

void SensorWatch::failReading() {
  Ledger& book = *ledger;
  book.notes.readAt = nowInNs();
  ++book.notes.failures;
  book.published.store(book.notes);
  isOrdinary = false;
  xEndReading();
}

}  // namespace QV::sensor
