#include "sensor/core/internal/health_judge.h"

#include <functional>

#include "platform/ko/simulated_time.h"
#include "tests/support/vocabulary.h"

namespace QV::sensor {
namespace {

using enum HealthState;
using Model::PointMeaning;
using Model::Silence;

const std::string kOtherSensor = "Right";

constexpr std::int64_t at(double seconds) {
  return static_cast<std::int64_t>(seconds * 1e9 + 0.5);
}

/** A sound sensor of a robot whose refresh reads it, 100 s after the clock's start. */
struct Facts {
  Facts() {
    watch.setOn(true);
    moment.now = at(100.0);
    moment.isRefreshed = true;
    notes.startedAt = at(90.0);
    notes.last = {at(99.95), at(99.9)};
    notes.recordBefore = notes.answeredBefore = at(99.85);
    notes.stampedAt = at(99.95);
    notes.stamps = notes.changes = 50;
    switches.isWanted = switches.isStarted = true;
  }

  std::string judge() {
    watch.setNature(nature);
    const HealthFinding finding =
        HealthJudge(watch, notes, HealthLimits(), track, moment).judge(switches);
    return std::string(getName(finding.state)) + ": " + describeFinding(finding, std::nullopt) +
           (finding.isMeasured ? "" : ", unmeasured");
  }

  void beEmpty(const char* excuse, bool isMeasured) {
    notes.isEmpty = true;
    notes.excuse = excuse;
    notes.isExcuseMeasured = isMeasured;
  }
  void call(HardwareCall call, double seconds) {
    switches.call = call;
    switches.callSince = at(100.0 - seconds);
  }
  void startReading(double seconds) {
    const ko::SimulatedTime time{ko::Clock::time_point(ko::Duration(at(100.0 - seconds)))};
    watch.beginReading();
  }
  /** A sensor whose only record is of before its start. */
  void showOld(double startedBefore) {
    notes.startedAt = at(100.0 - startedBefore);
    notes.stamps = 1;
    notes.last.stamp = at(99.5);
    notes.answeredBefore = 0;
  }

  SensorWatch watch;
  HealthNature nature{PointMeaning::scan, Silence::never, true, true};
  ReadingNotes notes;
  HealthTrack track;
  HealthMoment moment;
  HealthSwitches switches;
};

struct JudgeCase {
  const char* expected;
  std::function<void(Facts&)> change;
};

constexpr char kSound[] = "sound: its records are fresh";

const std::vector<JudgeCase> kJudgeCases{
    {kSound, [](Facts&) {}},
    // Switches, and calls of the hardware.
    {"silent: its reading has not returned for 1.01 s, limit 1.00 s",
     [](auto& f) { f.startReading(1.01); }},
    {kSound, [](auto& f) { f.startReading(0.99); }},
    {"silent: its hardware has been starting for 1.51 s, limit 1.50 s",
     [](auto& f) { f.call(HardwareCall::starting, 1.51); }},
    {"starting: its hardware has been starting for 1.49 s",
     [](auto& f) { f.call(HardwareCall::starting, 1.49); }},
    {"failing: its hardware has been stopping for 1.51 s, limit 1.50 s",
     [](auto& f) { f.call(HardwareCall::stopping, 1.51); }},
    {"off: nobody has subscribed to it", [](auto& f) { f.call(HardwareCall::stopping, 1.49); }},
    {"failing: its hardware was left on, since it failed to stop",
     [](auto& f) { f.switches.isLeftOn = true; }},
    {"failing: its diagnosis is bad", [](auto& f) { f.switches.isDiagnosisGood = false; }},
    {"off: it is disabled", [](auto& f) { f.switches.isEnabled = false; }},
    {"off: nobody has subscribed to it", [](auto& f) { f.switches.isWanted = false; }},
    {"starting: its hardware has been starting for 0.00 s",
     [](auto& f) { f.switches.isStarted = false; }},
    {"failing: its start threw an exception",
     [](auto& f) {
       f.switches.isStarted = false;
       f.switches.hasThrown = true;
     }},
    // Health that is switched off.
    {"sound: it runs, but health is switched off", [](auto& f) { f.watch.setOn(false); }},
    {"starting: no fresh record yet, 10.00 s after its start",
     [](auto& f) {
       f.watch.setOn(false);
       f.notes.last = {};
       f.notes.recordBefore = 0;
     }},
    {"sound: it runs, but health is switched off",
     [](auto& f) {
       f.watch.setOn(false);
       f.showOld(9.0);
       f.nature.hasRate = false;
     }},
    {"sound: it runs, but health is switched off",
     [](auto& f) {
       f.watch.setOn(false);
       f.showOld(9.0);
       f.beEmpty("the motors are off", true);
     }},
    {"starting: no fresh record yet, 9.00 s after its start",
     [](auto& f) {
       f.watch.setOn(false);
       f.showOld(9.0);
     }},
    // Readings that fail, or do not come.
    {"failing: its reading fails", [](auto& f) { f.notes.failures = 1; }},
    {"late: not read for 0.45 s, limit 0.40 s: the refresh hangs",
     [](auto& f) {
       f.notes.last = {at(99.55), at(99.5)};
     }},
    {kSound,
     [](auto& f) {
       f.notes.last = {at(99.55), at(99.5)};
       f.moment.isRefreshed = false;
     }},
    {"silent: never read since it started 1.60 s ago, limit 1.50 s: the refresh hangs",
     [](auto& f) {
       f.notes = {};
       f.notes.startedAt = at(98.4);
     }},
    {"starting: no fresh record yet, 1.40 s after its start",
     [](auto& f) {
       f.notes = {};
       f.notes.startedAt = at(98.6);
     }},
    // No records.
    {"sound: no record, which is normal: the motors are off",
     [](auto& f) { f.beEmpty("the motors are off", true); }},
    {"sound: no record, which is normal: the motors are off, unmeasured",
     [](auto& f) { f.beEmpty("the motors are off", false); }},
    {"noisy: 6 of its last 20 readings are impossible, limit 5",
     [](auto& f) {
       f.beEmpty("the motors are off", true);
       f.notes.garbage = 0b1010111001;
     }},
    {"sound: no record, which is normal: the robot moves, unmeasured",
     [](auto& f) {
       f.beEmpty(nullptr, true);
       f.nature.silence = Silence::whileMoving;
       f.moment.isMoving = true;
     }},
    {"silent: no record for 0.45 s, limit 0.40 s",
     [](auto& f) {
       f.beEmpty(nullptr, true);
       f.nature.silence = Silence::whileMoving;
       f.notes.answeredBefore = at(99.55);
     }},
    {"sound: no record, which is normal: it has nothing to report",
     [](auto& f) {
       f.beEmpty(nullptr, false);
       f.nature.hasRate = false;
     }},
    {"sound: no record, which is normal: the robot moves, unmeasured",
     [](auto& f) {
       f.beEmpty(nullptr, true);
       f.nature.silence = Silence::always;
     }},
    {"silent: no fresh record since it started 1.60 s ago, limit 1.50 s",
     [](auto& f) { f.showOld(1.6); }},
    {"starting: no fresh record yet, 1.40 s after its start", [](auto& f) { f.showOld(1.4); }},
    {"starting: no fresh record yet, 1.49 s after its start",
     [](auto& f) {
       f.showOld(1.54);
       f.moment.isRefreshed = false;
     }},
    {kSound,
     [](auto& f) {
       f.beEmpty(nullptr, true);
       f.notes.answeredBefore = at(99.61);
     }},
    {kSound,
     [](auto& f) {
       f.beEmpty(nullptr, true);
       f.notes.answeredBefore = at(99.56);
       f.moment.isRefreshed = false;
     }},
    {"silent: no record for 0.41 s, limit 0.40 s",
     [](auto& f) {
       f.beEmpty(nullptr, true);
       f.notes.answeredBefore = at(99.54);
       f.startReading(0.5);
     }},
    // Records that are not as they should be.
    {"late: its record is 0.45 s old, limit 0.40 s",
     [](auto& f) { f.notes.last.stamp = at(99.55); }},
    {kSound, [](auto& f) { f.notes.last.stamp = at(99.61); }},
    {kSound,
     [](auto& f) {
       f.notes.last.stamp = at(99.55);
       f.moment.deviceOffset = at(-0.1);
     }},
    {"late: its record is 0.45 s old, limit 0.40 s",
     [](auto& f) {
       f.notes.last.stamp = at(99.55);
       f.moment.deviceOffset = at(0.1);
     }},
    {"late: its record is 0.41 s old, limit 0.40 s",
     [](auto& f) {
       f.notes.last.stamp = at(99.54);
       f.moment.isRefreshed = false;
     }},
    {"late: its record is 0.45 s old, limit 0.40 s",
     [](auto& f) {
       f.nature.hasRate = false;
       f.notes.stampedAt = at(95.0);
       f.notes.last.stamp = at(94.55);
     }},
    {kSound,
     [](auto& f) {
       f.nature.hasRate = false;
       f.notes.stampedAt = at(95.0);
       f.notes.last.stamp = at(94.65);
     }},
    {kSound, [](auto& f) { f.notes.garbage = 0b11111; }},
    {"noisy: 6 of its last 20 readings are impossible, limit 5",
     [](auto& f) {
       f.notes.garbage = 0b111111;
       f.track.turned = 0.51;
     }},
    {"late: its record is 0.45 s old, limit 0.40 s",
     [](auto& f) {
       f.notes.garbage = 0b111111;
       f.notes.last.stamp = at(99.55);
     }},
    {"noisy: its answer changed 6 times in its last 20 readings, limit 5",
     [](auto& f) {
       f.nature.points = PointMeaning::zone;
       f.notes.changed = 0b111111;
     }},
    {kSound,
     [](auto& f) {
       f.nature.points = PointMeaning::zone;
       f.notes.garbage = 0b111111;
     }},
    {kSound, [](auto& f) { f.track.turned = f.track.went = 0.49; }},
    {"frozen: the same points while the robot turned 0.51 rad, limit 0.50 rad",
     [](auto& f) { f.track.turned = f.track.went = 0.51; }},
    {"frozen: the same points while the robot went 0.51 m, limit 0.50 m",
     [](auto& f) {
       f.track.went = 0.51;
       f.track.contradicted = &kOtherSensor;
       f.track.contradiction = 6.1;
     }},
    {"suspect: its range is 1.25 m, that of Right 2.50 m, for 6.10 s of motion, limit 6.00 s",
     [](auto& f) {
       f.track.contradicted = &kOtherSensor;
       f.track.contradiction = 6.1;
       f.track.own = 1.25;
       f.track.others = 2.5;
     }},
    {kSound, [](auto& f) {
       f.track.contradicted = &kOtherSensor;
       f.track.contradiction = 5.9;
     }}};

TEST(HealthJudge, findsTheWorstThatTheFactsSay) {
  for (std::size_t i = 0; i < kJudgeCases.size(); ++i) {
    Facts facts;
    kJudgeCases[i].change(facts);
    EXPECT_EQ(facts.judge(), kJudgeCases[i].expected) << "case " << i;
  }
}

}  // namespace
}  // namespace QV::sensor
