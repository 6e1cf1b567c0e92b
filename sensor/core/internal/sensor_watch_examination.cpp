#include <algorithm>

#include "sensor/core/internal/sensor_watch.h"
#include "sensor/core/internal/watch_times.h"

namespace QV::sensor {
namespace {

constexpr std::size_t kFew = 8;
constexpr std::uint32_t kWindowMask = (1u << SensorWatch::kWindow) - 1;

std::uint32_t shifted(std::uint32_t bits, bool newest) {
  return (bits << 1 | (newest ? 1u : 0u)) & kWindowMask;
}

}  // namespace

void SensorWatch::xExamine(const std::vector<Math::MetricalData>& records) {
  const std::int64_t now = nowInNs();
  ReadingNotes notes = published.loadOwn();
  const bool wasEmpty = notes.isEmpty;
  // A reading that threw does not show what was not there.
  const LastReading before = notes.failures == 0 ? notes.last : LastReading();
  notes.recordBefore = notes.getRecordAt();
  notes.answeredBefore = notes.getAnsweredAt();
  notes.failures = 0;
  notes.isEmpty = records.empty();
  notes.excuse = records.empty() ? xGetExcuse() : nullptr;
  notes.isExcuseMeasured = isPendingMeasured;
  // An exchange takes its time, and hardly ever finds any.
  const bool cameAsGarbage = pendingGarbage && pendingGarbage.exchange(false);
  notes.garbage = shifted(notes.garbage, cameAsGarbage);
  notes.changed = shifted(notes.changed, false);
  notes.last.readAt = now;
  if (!records.empty()) xNoteRecords(records, before, notes);
  // A change after a gap without records does not count as flicker.
  if (wasEmpty) notes.changed &= ~1u;
  published.store(notes);
  if (notes.stamps > 1) isFirstAwaited = false;
  isOrdinary.store(!records.empty(), std::memory_order_relaxed);
  examinedAt = now;
  xNoteCalm(notes);
}

void SensorWatch::xNoteCalm(const ReadingNotes& notes) {
  const bool isSilent = notes.isEmpty && !notes.excuse;
  isSilentOnMove.store(isSilent && nature.silence == Model::Silence::whileMoving,
                       std::memory_order_relaxed);
  const std::int64_t calm = xFindCalm(notes);
  // Any record of a zone is news.
  mayRepeat = calm != 0 && (notes.isEmpty || nature.points != Model::PointMeaning::zone);
  news = nature.hasRate ? News::none : notes.digest.isBlank ? News::withPoints : News::all;
  calmUntil.store(isStill ? 0 : calm, std::memory_order_release);
}

// What goes on as it should needs no judge until its record is old.
std::int64_t SensorWatch::xFindCalm(const ReadingNotes& notes) const {
  const bool isZone = nature.points == Model::PointMeaning::zone;
  if (notes.garbage != 0 || (isZone && notes.changed != 0)) return 0;
  const std::int64_t readAt = notes.last.readAt;
  if (notes.isEmpty) {
    const bool isReason = notes.excuse || isSilentOnMove || !nature.hasRate;
    return isReason ? readAt + patience : 0;
  }
  if (nature.hasRate && notes.stamps < 2) return 0;
  const std::int64_t cameAt = nature.hasRate ? readAt : notes.stampedAt;
  return readAt - std::max(cameAt - notes.last.stamp, std::int64_t{0}) + patience;
}

void SensorWatch::xNoteRecords(const std::vector<Math::MetricalData>& records,
                               const LastReading& before, ReadingNotes& notes) {
  const bool isFirst = notes.recordBefore == 0;
  notes.last.stamp = stampOf(records);
  if (!isFirst && xSkips(records, notes.last.readAt)) {
    if (notes.digest.isGarbage) notes.garbage |= 1u;
    return;
  }
  PlanarView seen;
  const auto shape = view.loadOwnHead<PlanarView::Shape>();
  xNoteDigest(digestOf(records, nature, shape, seen), isFirst, notes);
  xNoteStamp(before, isFirst, notes);
  if (hasView || !seen.isEmpty()) {
    xNoteView(seen, notes);
  } else {
    view.storeHead(seen.getShape());
  }
}

// Large records take time to examine.
bool SensorWatch::xSkips(const std::vector<Math::MetricalData>& records, std::int64_t now) const {
  if (nature.points == Model::PointMeaning::arc || countPoints(records) <= kFew) return false;
  return now > digestedAt && now - digestedAt < kSuspectPeriod;
}

void SensorWatch::xNoteDigest(const ReadingDigest& digest, bool isFirst, ReadingNotes& notes) {
  const bool isChanged = !isFirst && digest.fingerprint != notes.digest.fingerprint;
  if (isFirst || isChanged) ++notes.changes;
  if (isChanged) notes.changed |= 1u;
  isStill = !isFirst && !isChanged && nature.showsMotion && digest.hasObstacle;
  if (digest.isGarbage) notes.garbage |= 1u;
  digestedAt = notes.last.readAt;
  notes.digest = digest;
}

// What a sensor reported before it was started, or while nobody read it, lies in memory until its
// next report: its age then says nothing. It does after readings that showed no report.
void SensorWatch::xNoteStamp(const LastReading& before, bool isFirst, ReadingNotes& notes) {
  const std::int64_t stamp = notes.last.stamp;
  if (!isFirst && stamp == digestedStamp) return;
  digestedStamp = stamp;
  ++notes.stamps;
  const bool isOfThisRun = !isFirst || stamp >= notes.startedAt;
  const bool isKnown = isOfThisRun && before.readAt != 0;
  notes.stampedAt = nature.hasRate ? notes.last.readAt : isKnown ? before.readAt : stamp;
}

void SensorWatch::xNoteView(const PlanarView& seen, ReadingNotes& notes) {
  notes.axisX = seen.getAxisX();
  notes.axisY = seen.getAxisY();
  hasView = !seen.isEmpty();
  view.store(seen);
}

void SensorWatch::failReading() {
  ReadingNotes notes = published.loadOwn();
  notes.recordBefore = notes.getRecordAt();
  notes.answeredBefore = notes.getAnsweredAt();
  notes.last.readAt = nowInNs();
  notes.isEmpty = true;
  notes.excuse = nullptr;
  ++notes.failures;
  published.store(notes);
  calmUntil = 0;
  isOrdinary = false;
  mayRepeat = false;
  xEndReading();
}

}  // namespace QV::sensor
