#pragma once

#include <atomic>
#include <cstdint>
#include <vector>

#include "platform/api.h"
#include "platform/ko/clock.h"
#include "platform/math/metrical_data.h"
#include "sensor/core/internal/health_nature.h"
#include "sensor/core/internal/reading_digest.h"
#include "sensor/core/internal/sequence_locked.h"

namespace QV::sensor {

/** What each reading changes, even one that is like the reading before. Times in ns; 0 for never.
 */
struct LastReading {
  std::int64_t readAt = 0;
  /** The stamp of the oldest record of the last reading that had any. */
  std::int64_t stamp = 0;
};

/** Notes about a sensor's readings since it was started. Times in ns; 0 for never. */
struct ReadingNotes {
  LastReading last;
  std::int64_t startedAt = 0;
  /** Of earlier readings: the time of the last record, and of the last record or reason for
   * none. */
  std::int64_t recordBefore = 0;
  std::int64_t answeredBefore = 0;
  /** The time at which the record with the newest stamp came. Of a sensor that reports changes: the
   * last time at which it had not come; its stamp if nobody knows. */
  std::int64_t stampedAt = 0;
  /** The number of times that the stamp and the points changed. */
  std::uint32_t stamps = 0;
  std::uint32_t changes = 0;
  /** The number of readings in a row that threw. */
  std::uint32_t failures = 0;
  /** The last 20 readings, the newest in the lowest bit: could not be; differed from the one
   * before. */
  std::uint32_t garbage = 0;
  std::uint32_t changed = 0;
  /** The reason why the last reading had no record, without fault; null if there is no such
   * reason. */
  const char* excuse = nullptr;
  /** True if it measured all the same, and met nothing. */
  bool isExcuseMeasured = false;
  /** True if the last reading had no record. */
  bool isEmpty = false;
  /** The last reading with records that was examined; the sensor's axis in the ground frame. */
  ReadingDigest digest;
  float axisX = 1.0f;
  float axisY = 0.0f;

  std::int64_t getRecordAt() const { return isEmpty ? recordBefore : last.readAt; }
  /** The time of its last record, or of its last reason for none. */
  std::int64_t getAnsweredAt() const { return isEmpty && !excuse ? answeredBefore : last.readAt; }
};

/**
 * Notes what a sensor's readings are like, for whoever judges its health. Notes are taken by one
 * thread at a time, which never waits; any thread may ask. Of readings that follow each other
 * within 50 ms one counts. While all is well, one in 500 ms is examined, and only the times of
 * those between are noted.
 */
class alignas(64) SensorWatch {
 public:
  static constexpr int kWindow = 20;

  SensorWatch() = default;
  SensorWatch(const SensorWatch&) = delete;
  SensorWatch& operator=(const SensorWatch&) = delete;

  /** Sets the nature, before the sensor is first started. */
  void setNature(const HealthNature& newNature) { nature = newNature; }
  const HealthNature& getNature() const { return nature; }

  /** Readings are noted, or only the first ones after a start. */
  void setOn(bool value) { on = value; }
  bool isOn() const { return on; }
  /** True if the next reading is noted. For readers. */
  bool notesNext() const { return on || isFirstAwaited; }

  /** Begins notes anew, of a sensor that starts now, or that has just shown fresh records. */
  QV_API void begin(bool hasShown = false);
  /** Lets the sensor be judged at the next glance, whatever was noted, and forgets what it saw.
   * Not during a reading. */
  void alarm();

  QV_API void beginReading();
  QV_API void endReading(const std::vector<Math::MetricalData>& records);
  QV_API void failReading();
  /** Notes why the reading that is going on has no record: a text that lasts. */
  QV_API void excuse(const char* why, bool measured);
  /** Something came in that made no sense. */
  void noteGarbage() { pendingGarbage = true; }

  ReadingNotes getNotes() const { return published.load(); }
  /** Returns what the last reading with records sees around it; empty where it does not look
   * around, and if that was before `since`, ns. */
  PlanarView getView(std::int64_t since) const;
  /** Brings what isCalm() or, with the view, getView() touches into the cache. */
  void fetch(bool withView) const;
  /** Returns when the reading began that is going on, ns; 0 for none. */
  std::int64_t getReadingSince() const { return readingSince; }

  /** Sets for how long a record of a sound sensor counts as one, ns. */
  QV_API void setPatience(std::int64_t value);
  /** True if nothing was noted that could make a sound sensor any other; touches one line. */
  bool isCalm(std::int64_t now, bool isMoving) const {
    return on && now < calmUntil && readingSince == 0 && (isMoving || !isSilentOnMove);
  }

 private:
  enum class News : std::uint8_t { none, withPoints, all };

  bool xIsNews(const std::vector<Math::MetricalData>& records) const;
  bool xIsRepetition(const std::vector<Math::MetricalData>& records);
  bool xNoteRepetition(const std::vector<Math::MetricalData>& records);
  void xExamine(const std::vector<Math::MetricalData>& records);
  void xNoteRecords(const std::vector<Math::MetricalData>& records, const LastReading& before,
                    ReadingNotes& notes);
  void xNoteDigest(const ReadingDigest& digest, bool isFirst, ReadingNotes& notes);
  void xNoteStamp(const LastReading& before, bool isFirst, ReadingNotes& notes);
  void xNoteView(const PlanarView& seen, ReadingNotes& notes);
  bool xSkips(const std::vector<Math::MetricalData>& records, std::int64_t now) const;
  void xNoteCalm(const ReadingNotes& notes);
  /** Returns until when what was just noted needs no judge; 0 if it does. */
  std::int64_t xFindCalm(const ReadingNotes& notes) const;
  std::int64_t xSinceExamined() const;
  bool xIsDue() const;
  void xFetch() const;
  const char* xGetExcuse() const { return isExcused ? pendingExcuse : nullptr; }
  void xEndReading() { readingSince.store(0, std::memory_order_release); }

  // All that a reading or a glance touches as a rule lies in one line of cache: it ends with the
  // last reading, which the notes begin with.
  std::atomic<bool> on{false};
  std::atomic<bool> pendingGarbage{false};
  /** True as long as no reading since the start has shown that its records are fresh. */
  bool isFirstAwaited = false;
  /** True if the last reading found records and no trouble. */
  std::atomic<bool> isOrdinary{false};
  /** True if the next reading need not be examined, if it is like the last one. */
  bool mayRepeat = false;
  /** Which record with a new stamp must be examined. */
  News news = News::none;
  /** True if the last reading found nothing, which is no fault as long as the robot moves. */
  std::atomic<bool> isSilentOnMove{false};
  /** True if the reading that is going on has an excuse for having no record. */
  bool isExcused = false;
  std::atomic<std::int64_t> readingSince{0};
  /** The time of the last reading that was examined. */
  std::int64_t examinedAt = 0;
  /** The time until which it is calm, if no reading comes. */
  std::atomic<std::int64_t> calmUntil{0};
  std::atomic<std::int64_t> patience{0};
  SequenceLocked<ReadingNotes> published;
  const char* pendingExcuse = nullptr;
  bool isPendingMeasured = false;
  /** True if the points stayed the same, though the robot's motion would change them. */
  bool isStill = false;
  HealthNature nature;
  /** The time of the last reading whose points were examined, and its stamp. */
  std::int64_t digestedAt = 0;
  std::int64_t digestedStamp = 0;
  bool hasView = false;
  SequenceLocked<PlanarView> view;
};

}  // namespace QV::sensor
