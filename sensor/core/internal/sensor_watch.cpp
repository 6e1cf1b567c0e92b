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

// The limits are much longer, so readings within this time are examined once.
constexpr std::int64_t kLookPeriod = 50'000'000;
// The error of a coarse time, which may be this much too early.
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

PlanarView SensorWatch::getView() const {
  const Ledger& book = xGet();
  return book.sight ? book.sight->view.load() : PlanarView();
}

void SensorWatch::xOpenLedger() {
  auto book = std::make_unique<Ledger>();
  if (nature.showsMotion) book->sight = std::make_unique<Sight>();
  ledger = book.release();
}

void SensorWatch::beginCall(HardwareCall newCall) {
  if (!ledger.load()) xOpenLedger();
  ledger.load()->callSince = nowInNs();
  call = newCall;
  // An exception of the start stays noted until the next start.
  if (newCall == HardwareCall::stopping) return;
  thrown = false;
}

void SensorWatch::endCall(HardwareCall ended, bool success, bool threw) {
  if (ended == HardwareCall::stopping) {
    leftOn = !success;
  } else {
    thrown = threw;
    if (success) xBeginNotes();
  }
  call = HardwareCall::none;
}

void SensorWatch::xBeginNotes() {
  leftOn = false;
  pendingGarbage = false;
  isOrdinary = false;
  isFirstAwaited = nature.hasRate;
  ReadingNotes notes;
  notes.startedAt = nowInNs();
  ledger.load()->notes.store(notes);
}

void SensorWatch::excuse(const char* why, bool measured) {
  pendingExcuse = why;
  isPendingMeasured = measured;
}

void SensorWatch::beginReading() {
  pendingExcuse = nullptr;
  readingSince.store(notedAs(ko::detail::coarseNow()), std::memory_order_release);
}

// A reading like the one just before adds nothing.
bool SensorWatch::xIsTooSoon(const std::vector<Math::MetricalData>& records) const {
  if (!isOrdinary || records.empty() || pendingGarbage) return false;
  const std::int64_t passed = readingSince.load(std::memory_order_relaxed) - lookedAt;
  return passed != 0 && passed > -kCoarse && passed < kLookPeriod;
}

void SensorWatch::endReading(const std::vector<Math::MetricalData>& records) {
  if (xIsTooSoon(records)) return xEndReading();
  const std::int64_t now = nowInNs();
  SequenceLocked<ReadingNotes>& published = ledger.load()->notes;
  ReadingNotes notes = published.loadOwn();
  const bool hadRecords = notes.recordAt == notes.readAt;
  notes.failures = 0;
  notes.excuse = records.empty() ? pendingExcuse : nullptr;
  notes.isExcuseMeasured = isPendingMeasured;
  if (!records.empty() || notes.excuse) notes.answeredAt = now;
  notes.garbage = shifted(notes.garbage, pendingGarbage.exchange(false));
  notes.changed = shifted(notes.changed, false);
  notes.readAt = now;
  if (!records.empty()) xNoteRecords(records, notes);
  // A change after a gap without records does not count as flicker.
  if (!hadRecords) notes.changed &= ~1u;
  published.store(notes);
  if (notes.stamps > 1) isFirstAwaited = false;
  isOrdinary = !records.empty();
  lookedAt = now;
  xEndReading();
}

void SensorWatch::xNoteRecords(const std::vector<Math::MetricalData>& records,
                               ReadingNotes& notes) {
  if (xSkips(records, notes)) {
    notes.digest.stamp = stampOf(records);
    if (notes.digest.isGarbage) notes.garbage |= 1u;
  } else {
    static constexpr PlanarView::Shape kUnknown;
    const Sight* const sight = ledger.load()->sight.get();
    PlanarView seen;
    xNoteDigest(digestOf(records, nature, sight ? sight->shape : kUnknown, seen), notes);
    if (sight && (!seen.isEmpty() || notes.hasView)) xNoteView(seen, notes);
  }
  notes.recordAt = notes.readAt;
}

// Large records are examined only every third time, to save time; the first one always.
bool SensorWatch::xSkips(const std::vector<Math::MetricalData>& records,
                         const ReadingNotes& notes) {
  const bool isCheap = nature.points == Model::PointMeaning::arc || countPoints(records) <= kFew;
  const bool skips = notes.recordAt != 0 && !isCheap && skipped < kMostSkipped;
  skipped = static_cast<std::uint8_t>(skips ? skipped + 1 : 0);
  return skips;
}

void SensorWatch::xNoteDigest(const ReadingDigest& digest, ReadingNotes& notes) {
  std::int64_t& lastStamp = ledger.load()->lastStamp;
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
}

void SensorWatch::xNoteView(const PlanarView& seen, ReadingNotes& notes) {
  Sight& sight = *ledger.load()->sight;
  notes.hasView = !seen.isEmpty();
  notes.axisX = seen.getAxisX();
  notes.axisY = seen.getAxisY();
  sight.shape = seen.getShape();
  sight.view.store(seen);
}

void SensorWatch::failReading() {
  SequenceLocked<ReadingNotes>& published = ledger.load()->notes;
  ReadingNotes notes = published.loadOwn();
  notes.readAt = nowInNs();
  ++notes.failures;
  published.store(notes);
  isOrdinary = false;
  xEndReading();
}

}  // namespace QV::sensor
