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

// All sensors are due at the same refresh: what they see is compared, and the robot moves on.
bool SensorWatch::xIsDue() const {
  const std::int64_t passed = xSinceExamined();
  if (passed == 0 || passed <= -kCoarse) return true;
  if (calmUntil.load(std::memory_order_relaxed) == 0) return passed >= kSuspectPeriod;
  const std::int64_t now = readingSince.load(std::memory_order_relaxed);
  return passed >= kAtOnce && now / kExaminePeriod != examinedAt / kExaminePeriod;
}

bool SensorWatch::xIsRepetition(const std::vector<Math::MetricalData>& records) {
  if (records.empty() == isOrdinary || pendingGarbage || xIsDue()) return false;
  if (isOrdinary && xSinceExamined() < kAtOnce) return true;
  return mayRepeat && xNoteRepetition(records);
}

// Who reports changes reports again and again that there is nothing.
bool SensorWatch::xIsNews(const std::vector<Math::MetricalData>& records) const {
  return news == News::all || (news == News::withPoints && countPoints(records) > 0);
}

// It is cheap, because it touches little memory.
bool SensorWatch::xNoteRepetition(const std::vector<Math::MetricalData>& records) {
  if (!isOrdinary && xGetExcuse() != published.loadOwn().excuse) return false;
  const auto before = published.loadOwnHead<LastReading>();
  LastReading last{notedAs(ko::detail::coarseNow()), before.stamp};
  if (isOrdinary) last.stamp = stampOf(records);
  if (last.stamp != before.stamp && xIsNews(records)) return false;
  published.storeHead(last);
  const std::int64_t calm = calmUntil.load(std::memory_order_relaxed);
  if (calm == 0) return true;
  const bool isDated = isOrdinary && news == News::none;
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
