#include "sensor/core/internal/sensor_watch.h"

#include <algorithm>

#include "platform/ko/internal/time_source.h"
#include "sensor/core/internal/watch_times.h"

namespace QV::sensor {
namespace {

// The limits are much longer, so readings within this time count as one.
constexpr std::int64_t kAtOnce = 50'000'000;
// The error of a coarse time, which may be this much too early.
constexpr std::int64_t kCoarse = 10'000'000;

void fetchLines(const void* start, std::size_t size) {
  constexpr std::size_t kLine = 64;
  for (std::size_t at = 0; at < size; at += kLine) {
    __builtin_prefetch(static_cast<const char*>(start) + at);
  }
}

}  // namespace

PlanarView SensorWatch::getView(std::int64_t since) const {
  const std::int64_t recordAt =
      isOrdinary ? published.loadHead<LastReading>().readAt : published.load().getRecordAt();
  return recordAt > since ? view.load() : PlanarView();
}

void SensorWatch::alarm() {
  calmUntil = 0;
  hasView = false;
  view.store({});
}

void SensorWatch::begin(bool hasShown) {
  alarm();
  pendingGarbage = false;
  isOrdinary = false;
  mayRepeat = false;
  isStill = false;
  isFirstAwaited = nature.hasRate && !hasShown;
  ReadingNotes notes;
  notes.startedAt = nowInNs();
  if (hasShown) {
    notes.last = {notes.startedAt, notes.startedAt};
    notes.stampedAt = notes.startedAt;
  }
  published.store(notes);
}

void SensorWatch::excuse(const char* why, bool measured) {
  isExcused = true;
  pendingExcuse = why;
  isPendingMeasured = measured;
}

void SensorWatch::beginReading() {
  isExcused = false;
  readingSince.store(notedAs(ko::detail::coarseNow()), std::memory_order_release);
  if (!mayRepeat || xIsDue()) xFetch();
}

// The rest of it is out of the cache by now, and is there again after the reading.
void SensorWatch::xFetch() const {
  fetchLines(this, sizeof(*this));
}

void SensorWatch::fetch(bool withView) const {
  __builtin_prefetch(this);
  if (withView) fetchLines(&view, sizeof(view));
}

void SensorWatch::endReading(const std::vector<Math::MetricalData>& records) {
  if (!xIsRepetition(records)) xExamine(records);
  xEndReading();
}

std::int64_t SensorWatch::xSinceExamined() const {
  return readingSince.load(std::memory_order_relaxed) - examinedAt;
}

bool SensorWatch::xIsDue() const {
  const std::int64_t passed = xSinceExamined();
  return passed == 0 || passed <= -kCoarse || passed >= kExaminePeriod;
}

bool SensorWatch::xIsRepetition(const std::vector<Math::MetricalData>& records) {
  if (records.empty() == isOrdinary || pendingGarbage || xIsDue()) return false;
  if (isOrdinary && xSinceExamined() < kAtOnce) return true;
  return mayRepeat && xNoteRepetition(records);
}

// It is cheap, because it touches little memory.
bool SensorWatch::xNoteRepetition(const std::vector<Math::MetricalData>& records) {
  if (!isOrdinary && xGetExcuse() != published.loadOwn().excuse) return false;
  const auto before = published.loadOwnHead<LastReading>();
  LastReading last{notedAs(ko::detail::coarseNow()), before.stamp};
  if (isOrdinary) last.stamp = stampOf(records);
  if (isStampNews && last.stamp != before.stamp) return false;
  published.storeHead(last);
  const std::int64_t calm = calmUntil.load(std::memory_order_relaxed);
  if (calm == 0) return true;
  const bool isDated = isOrdinary && !isStampNews;
  calmUntil.store(
      isDated ? std::min(last.stamp, last.readAt) + patience : calm + last.readAt - before.readAt,
      std::memory_order_release);
  return true;
}

void SensorWatch::setPatience(std::int64_t value) {
  patience = value;
  calmUntil = 0;
}

}  // namespace QV::sensor
