#include "sensor/core/internal/sensor_watch.h"

#include <random>
#include <string>
#include <utility>

#include "platform/ko/simulated_time.h"
#include "sensor/core/internal/health_judge.h"
#include "tests/support/vocabulary.h"

namespace QV::sensor {
namespace {

using Model::PointMeaning;
using Model::Silence;
using Time = ko::Clock::time_point;

constexpr char kRests[] = "it rests";
constexpr double kMillisecond = 1e6;
constexpr std::int64_t kPatience = 400'000'000;
constexpr int kAtOnce = 50;
constexpr int kExamined = 550;

enum class Reading { other, same, impossible, stale, none, excused, throwing };

/** A watch, and what every reading showed. */
class WatchedReadings {
 public:
  explicit WatchedReadings(const HealthNature& nature) {
    watch.setNature(nature);
    watch.setPatience(kPatience);
    watch.setOn(true);
    start();
  }

  void start() {
    watch.begin();
    failures = 0;
    recordAt = answeredAt = impossibleSince = Time();
    lastStamp = Time();
    stamps = 0;
  }

  void read(Reading reading) {
    const Time now = ko::Clock::now();
    watch.beginReading();
    isExcused = reading == Reading::excused;
    if (isExcused) watch.excuse(kRests, true);
    failures = reading == Reading::throwing ? failures + 1 : 0;
    isEmpty = reading >= Reading::none;
    if (!isEmpty) recordAt = now;
    if (reading != Reading::impossible) impossibleSince = Time();
    if (reading == Reading::impossible && impossibleSince == Time()) impossibleSince = now;
    if (!isEmpty || isExcused) answeredAt = now;
    if (reading == Reading::throwing) return watch.failReading();
    watch.endReading(isEmpty ? std::vector<Math::MetricalData>{}
                             : std::vector{record(reading, now)});
  }

  void expectNotes() const {
    const ReadingNotes notes = watch.getNotes();
    EXPECT_EQ(notes.failures, failures);
    EXPECT_EQ(notes.isEmpty, isEmpty);
    EXPECT_EQ(notes.excuse, isExcused ? kRests : nullptr);
    EXPECT_LE(millisecondsFrom(notes.getRecordAt(), recordAt), kAtOnce);
    EXPECT_LE(millisecondsFrom(notes.getAnsweredAt(), answeredAt), kAtOnce);
    EXPECT_EQ(watch.getReadingSince(), 0);
    EXPECT_LE(notes.stamps, stamps);
    // One reading within 500 ms is examined. Only ranges can be impossible.
    const bool isGarbage = impossibleSince != Time() && watch.getNature().showsMotion &&
                           millisecondsFrom(inNs(impossibleSince), ko::Clock::now()) > kExamined;
    EXPECT_TRUE(!isGarbage || notes.garbage != 0);
  }

  void expectCalmIsSound(bool isMoving) {
    HealthMoment moment;
    moment.now = inNs(ko::Clock::now());
    moment.isRefreshed = true;
    moment.isMoving = isMoving;
    if (!watch.isCalm(moment.now, isMoving)) return;
    ++calms;
    HealthSwitches switches;
    switches.isWanted = switches.isStarted = true;
    const HealthFinding finding =
        HealthJudge(watch, watch.getNotes(), HealthLimits(), HealthTrack(), moment).judge(switches);
    EXPECT_EQ(finding.state, HealthState::sound) << describeFinding(finding, std::nullopt);
  }

  int calms = 0;

 private:
  static std::int64_t inNs(Time time) { return time.time_since_epoch().count(); }
  static int millisecondsFrom(std::int64_t noted, Time expected) {
    return static_cast<int>(static_cast<double>(inNs(expected) - noted) / kMillisecond);
  }

  Math::MetricalData record(Reading reading, Time now) {
    Math::MetricalData result;
    result.fieldOfView = {0.1f, 5.0f, 1.0f, 1};
    result.timestamp = reading == Reading::stale ? Time(milliseconds(900)) : now;
    if (std::exchange(lastStamp, result.timestamp) != result.timestamp) ++stamps;
    if (reading == Reading::other) range = range > 3.0f ? 1.0f : range + 0.1f;
    result.points = {{reading == Reading::impossible ? -1.0f : range, 0.0f, 0.0f}};
    return result;
  }

  SensorWatch watch;
  float range = 1.0f;
  std::uint32_t failures = 0;
  bool isEmpty = false;
  bool isExcused = false;
  Time recordAt;
  Time answeredAt;
  /** The first of the impossible readings without another in between. */
  Time impossibleSince;
  /** The records since the start whose time differs from that of the one before. */
  std::uint32_t stamps = 0;
  Time lastStamp;
};

const std::vector<std::pair<const char*, HealthNature>> kNatures{
    {"laser", {PointMeaning::scan, Silence::never, true, true}},
    {"sonar", {PointMeaning::arc, Silence::whileMoving, true, true}},
    {"blind zone", {PointMeaning::zone, Silence::never, true, false}},
    {"people", {PointMeaning::sighting, Silence::always, false, false}}};

TEST(SensorWatch, notesWhatReadingsShowAndCallsNothingCalmThatIsNotSound) {
  std::mt19937 chance(7);
  const auto draw = [&](int most) { return std::uniform_int_distribution(0, most)(chance); };
  for (const auto& [name, nature] : kNatures) {
    int calms = 0;
    for (int run = 0; run < 60; ++run) {
      SCOPED_TRACE(std::string(name) + ", run " + std::to_string(run));
      ko::SimulatedTime time{Time(milliseconds(1000))};
      WatchedReadings sut(nature);
      Reading reading = Reading::other;
      for (int i = 0; i < 150; ++i) {
        if (draw(11) == 0) reading = static_cast<Reading>(draw(6));
        if (draw(11) == 0) reading = Reading::other;
        if (draw(29) == 0) sut.start();
        time.advance(milliseconds(
            std::vector{5, 40, 60, 100, 100, 260, 450}[static_cast<std::size_t>(draw(6))]));
        sut.expectCalmIsSound(draw(1) == 0);
        sut.read(reading);
        sut.expectNotes();
        sut.expectCalmIsSound(draw(1) == 0);
        if (testing::Test::HasFailure()) return;
      }
      calms += sut.calms;
    }
    EXPECT_GT(calms, 200) << name;
  }
}

TEST(SensorWatch, whileItIsOffNotesReadingsUntilASecondStampShowsThatRecordsAreFresh) {
  SensorWatch sut;
  sut.setNature(kNatures[0].second);
  sut.begin();
  for (const auto& [stamp, isNoted] : {std::pair{1, true}, {1, true}, {2, false}}) {
    const ko::SimulatedTime time{Time(milliseconds(1000 * stamp))};
    sut.beginReading();
    sut.endReading(
        {{"Laser", "Lasers", {0.1f, 5.0f, 1.0f, 1}, {}, {{1.0f, 0.0f, 0.0f}}, ko::Clock::now()}});
    EXPECT_EQ(sut.notesNext(), isNoted) << stamp;
  }
}

}  // namespace
}  // namespace QV::sensor
