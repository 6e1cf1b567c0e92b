#include "sensor/core/internal/sensor_watch.h"

#include <algorithm>

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

void SensorWatch::setNature(const HealthNature& newNature) {
  nature = newNature;
  if (nature.showsMotion && !sight) sight = std::make_unique<Sight>();
}

PlanarView SensorWatch::getView() const {
  return sight ? sight->view.load() : PlanarView();
}

void SensorWatch::begin(bool hasShown) {
  alarm();
  pendingGarbage = false;
  isOrdinary = false;
  isStill = false;
  isFirstAwaited = nature.hasRate && !hasShown;
  ReadingNotes notes;
  notes.startedAt = nowInNs();
  if (hasShown) {
    notes.readAt = notes.recordAt = notes.answeredAt = notes.stampedAt = notes.startedAt;
    notes.digest.stamp = notes.startedAt;
  }
  published.store(notes);
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
  ReadingNotes notes = published.loadOwn();
  const bool hadRecords = notes.recordAt == notes.readAt;
  notes.failures = 0;
  notes.excuse = records.empty() ? pendingExcuse : nullptr;
  notes.isExcuseMeasured = isPendingMeasured;
  if (!records.empty() || notes.excuse) notes.answeredAt = now;
  // An exchange takes its time, and hardly ever finds any.
  const bool cameAsGarbage = pendingGarbage && pendingGarbage.exchange(false);
  notes.garbage = shifted(notes.garbage, cameAsGarbage);
  notes.changed = shifted(notes.changed, false);
  notes.readAt = now;
  if (!records.empty()) xNoteRecords(records, notes);
  // A change after a gap without records does not count as flicker.
  if (!hadRecords) notes.changed &= ~1u;
  published.store(notes);
  if (notes.stamps > 1) isFirstAwaited = false;
  isOrdinary = !records.empty();
  lookedAt = now;
  xNoteCalm(notes);
  xEndReading();
}

void SensorWatch::xNoteCalm(const ReadingNotes& notes) {
  const bool isSilent = notes.recordAt != notes.readAt && !notes.excuse;
  isSilentOnMove.store(isSilent && nature.silence == Model::Silence::whileMoving,
                       std::memory_order_relaxed);
  calmUntil.store(xFindCalm(notes), std::memory_order_release);
}

void SensorWatch::setPatience(std::int64_t value) {
  patience = value;
  calmUntil = 0;
}

// What goes on as it should needs no judge until its record is old.
std::int64_t SensorWatch::xFindCalm(const ReadingNotes& notes) const {
  const bool isZone = nature.points == Model::PointMeaning::zone;
  if (notes.garbage != 0 || isStill || (isZone && notes.changed != 0)) return 0;
  if (notes.recordAt != notes.readAt) {
    const bool isReason = notes.excuse || isSilentOnMove || !nature.hasRate;
    return isReason ? notes.readAt + patience : 0;
  }
  if (nature.hasRate && notes.stamps < 2) return 0;
  const std::int64_t cameAt = nature.hasRate ? notes.readAt : notes.stampedAt;
  return notes.readAt - std::max(cameAt - notes.digest.stamp, std::int64_t{0}) + patience;
}

void SensorWatch::xNoteRecords(const std::vector<Math::MetricalData>& records,
                               ReadingNotes& notes) {
  if (xSkips(records, notes)) {
    notes.digest.stamp = stampOf(records);
    if (notes.digest.isGarbage) notes.garbage |= 1u;
  } else {
    static constexpr PlanarView::Shape kUnknown;
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
  const bool isFirst = notes.recordAt == 0;
  const bool isChanged = !isFirst && digest.fingerprint != notes.digest.fingerprint;
  if (isFirst || isChanged) ++notes.changes;
  if (isChanged) notes.changed |= 1u;
  isStill = !isFirst && !isChanged && nature.showsMotion && digest.hasObstacle;
  if (digest.isGarbage) notes.garbage |= 1u;
  if (isFirst || digest.stamp != lastStamp) {
    ++notes.stamps;
    notes.stampedAt = notes.readAt;
  }
  lastStamp = digest.stamp;
  notes.digest = digest;
}

void SensorWatch::xNoteView(const PlanarView& seen, ReadingNotes& notes) {
  notes.hasView = !seen.isEmpty();
  notes.axisX = seen.getAxisX();
  notes.axisY = seen.getAxisY();
  sight->shape = seen.getShape();
  sight->view.store(seen);
}

void SensorWatch::failReading() {
  ReadingNotes notes = published.loadOwn();
  notes.readAt = nowInNs();
  ++notes.failures;
  published.store(notes);
  calmUntil = 0;
  isOrdinary = false;
  xEndReading();
}

}  // namespace QV::sensor
