#include "sensor/core/sensor_health.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <functional>
#include <future>
#include <latch>
#include <map>
#include <stdexcept>
#include <thread>

#include "platform/ko/clock.h"
#include "robot/services/internal/robot_model_service.h"
#include "sensor/core/internal/health_inside.h"
#include "sensor/core/scoped_subscription.h"
#include "sensor/real/real_sensor_manager.h"
#include "tests/support/fake_robot.h"
#include "tests/support/fake_sensor.h"

namespace QV::sensor {
namespace {

using Fake = test::FakeSensor;
using enum HealthState;

constexpr char kHealthRobot[] =
    R"(<robot name="r"><link name="base"/><sensor name="Left" type="Eye"/>)"
    R"(<sensor name="Right" type="Eye"><property key="period" value="0.2"/>)"
    R"(<property key="limits" value="distance=0.7 old=3"/></sensor></robot>)";

SensorFactory factoryOf(const Model::SensorKind& kind) {
  SensorFactory factory;
  factory.add(kind, [](const SensorOrder& order) -> SensorFactory::Sensors {
    return {boost::make_shared<Fake>(order.config.name, order.kind.family)};
  });
  return factory;
}

SensorFactory eyeFactory() {
  return factoryOf({90, "Eye", "Eyes"});
}

boost::shared_ptr<QVBroker> robotOf(const std::string& xml) {
  const auto broker = test::brokerWithMemory<QVBroker>();
  broker->registerModule(boost::make_shared<robot::DeviceManager>(broker));
  broker->registerModule(boost::make_shared<test::FakeMotion>());
  broker->registerModule(boost::make_shared<robot::RobotModelService>(xml));
  return broker;
}

/** A robot that turns, with two eyes before which a wall comes and goes. */
struct SensorHealthTest : test::FakeRobotTest {
  SensorHealthTest() {
    broker->registerModule(boost::make_shared<robot::RobotModelService>(kHealthRobot));
    sut.emplace(broker, eyeFactory());
    motion->velocity = std::vector<float>{0.0f, 0.0f, 0.5f};
    for (Fake* eye : {&left(), &right()}) {
      eye->stamp = [] { return ko::Clock::now(); };
      eye->onRead = [eye, this] { eye->points = {wallNow()}; };
    }
    sut->onHealthChanged([this](const std::string& sensor, const SensorHealth& health) {
      if (!isFault(health.state)) return;
      EXPECT_EQ(health.since, ko::Clock::now());
      toldAt[sensor] = health.since;
      faults.push_back(sensor + " " + getName(health.state));
      reasons.push_back(health.reason);
    });
  }

  static Math::Position3D wallNow() {
    const double seconds = static_cast<double>(ko::Clock::now().time_since_epoch().count()) * 1e-9;
    return {static_cast<float>(1.2 + 0.5 * std::sin(seconds)), 0.0f, 0.0f};
  }
  Fake& eye(const char* name) { return dynamic_cast<Fake&>(*sut->getSensorPtr(name)); }
  Fake& left() { return eye("Left"); }
  Fake& right() { return eye("Right"); }
  SensorHealth health(const std::string& name) { return sut->getHealth(name).value(); }
  /** True if it is so within `limit` seconds. */
  bool becomes(const char* name, HealthState state, double limit) {
    return time.runUntil([&] { return health(name).state == state; },
                         milliseconds(static_cast<int>(1000 * limit)));
  }

  std::optional<RealSensorManager> sut;
  /** The faults that were told, and why. */
  std::vector<std::string> faults;
  std::vector<std::string> reasons;
  std::map<std::string, ko::Clock::time_point> toldAt;
};

struct HealthCase {
  const char* what;
  std::function<void(SensorHealthTest&)> fail;
  HealthState state;
  const char* reason;
  std::function<void(SensorHealthTest&)> repair;
};

const std::vector<HealthCase> kHealthCases{
    {"gives no records", [](auto& t) { t.left().hasRecord = false; }, silent,
     "no record for 0.60 s, limit 0.40 s", [](auto& t) { t.left().hasRecord = true; }},
    {"gives old records",
     [](auto& t) { t.left().stamp = [] { return ko::Clock::now() - milliseconds(620); }; }, late,
     "its record is 0.62 s old, limit 0.40 s",
     [](auto& t) { t.left().stamp = [] { return ko::Clock::now(); }; }},
    {"measures what can't be",
     [](auto& t) { t.left().onRead = [&t] {
                     t.left().points = {{kNan, 0.0f, 0.0f}};
                   }; }, noisy,
     "7 of its last 20 readings are impossible, limit 5",
     [](auto& t) { t.left().onRead = [&t] { t.left().points = {t.wallNow()}; }; }},
    {"stays the same", [](auto& t) { t.left().onRead = [] {}; }, frozen,
     "the same points while the robot turned 0.60 rad, limit 0.50 rad",
     [](auto& t) { t.left().onRead = [&t] { t.left().points = {t.wallNow()}; }; }},
    {"throws", [](auto& t) { t.left().onRead = [] { throw std::runtime_error("no echo"); }; },
     failing, "its reading fails: Unable to gather the data of Left: no echo",
     [](auto& t) { t.left().onRead = [&t] { t.left().points = {t.wallNow()}; }; }},
    {"does not return", [](auto& t) { t.left().onRead = [] { ko::os::msleep(1500); }; }, silent,
     "its reading has not returned for 1.10 s, limit 1.00 s",
     [](auto& t) { t.left().onRead = [&t] { t.left().points = {t.wallNow()}; }; }},
    {"contradicts another one",
     [](auto& t) {
       t.left().onRead = [&t] { t.left().points = {{0.6f * t.wallNow().x, 0.0f, 0.0f}}; };
     },
     suspect, "m, that of Right ",
     [](auto& t) { t.left().onRead = [&t] { t.left().points = {t.wallNow()}; }; }},
    {"has a bad diagnosis", [](auto& t) { t.sut->setSensorDiagnosis("Left", false); }, failing,
     "its diagnosis is bad", [](auto& t) { t.sut->setSensorDiagnosis("Left", true); }},
};

TEST_F(SensorHealthTest, eachBadStateHasAReasonWithFiguresAndARemedy) {
  sut->subscribe("me");
  for (const HealthCase& fault : kHealthCases) {
    SCOPED_TRACE(fault.what);
    ASSERT_TRUE(becomes("Left", sound, 4.0)) << health("Left").reason;
    ASSERT_TRUE(becomes("Right", sound, 4.0)) << health("Right").reason;
    const int before = health("Left").times;
    faults.clear();
    reasons.clear();
    fault.fail(*this);
    // It is told, though nobody asks.
    const std::string told = std::string("Left ") + getName(fault.state);
    EXPECT_TRUE(
        time.runUntil([&] { return std::ranges::count(faults, told) > 0; }, milliseconds(9000)))
        << getName(health("Left").state);
    EXPECT_EQ(health("Left").state, fault.state);
    EXPECT_EQ(health("Left").since, toldAt["Left"]);
    EXPECT_NE(health("Left").remedy, "");
    EXPECT_THAT(reasons, Contains(HasSubstr(fault.reason)));
    fault.repair(*this);
    EXPECT_TRUE(becomes("Left", sound, 4.0)) << health("Left").reason;
    EXPECT_EQ(health("Left").times, before + 1);
  }
}

TEST_F(SensorHealthTest, isOffWithoutASubscriberAndStartingUntilItsFirstFreshRecord) {
  EXPECT_EQ(health("Left").reason, "nobody has subscribed to it");
  // The old stamp imitates a camera that shows its last image after a restart.
  left().stamp = [] { return ko::Clock::time_point(milliseconds(-9000)); };
  right().hasRecord = false;
  sut->subscribe("me");
  time.advance(milliseconds(1400));
  EXPECT_EQ(health("Left").state, starting);
  time.advance(milliseconds(300));
  EXPECT_EQ(health("Left").reason, "no fresh record since it started 1.70 s ago, limit 1.50 s");
  EXPECT_EQ(health("Right").state, starting) << "its period is longer, and so are its limits";
  time.advance(milliseconds(400));
  EXPECT_EQ(health("Right").reason, "no fresh record since it started 2.10 s ago, limit 2.00 s");
  sut->enableSensorOrFamily("Right", false);
  EXPECT_EQ(health("Right").reason, "it is disabled");
  sut->enableSensorOrFamily("Right", true);
  sut->lookAgain();
  EXPECT_EQ(health("Right").state, starting);
  sut->unsubscribe("me");
  time.advance(milliseconds(250));
  EXPECT_EQ(health("Left").state, off);
  EXPECT_THAT(faults, ElementsAre("Left silent", "Right silent"));
}

TEST_F(SensorHealthTest, aHangingReadingIsReportedWithAllSensorsThatWaitForIt) {
  const auto hang = [this](int ms) {
    std::string ofRight;
    left().onRead = [&, ms] {
      ko::os::msleep(ms);
      ofRight = health("Right").reason;
    };
    time.advance(milliseconds(100));
    left().onRead = [this] { left().points = {wallNow()}; };
    EXPECT_TRUE(becomes("Right", sound, 3.0)) << health("Right").reason;
    return ofRight;
  };
  sut->subscribe("me");
  EXPECT_THAT(hang(2300), AllOf(StartsWith("never read since it started 2.30 s ago, limit 2.00 s"),
                                testing::EndsWith(": the reading of Left does not return")));
  EXPECT_THAT(faults, ElementsAre("Left silent", "Right silent"));
  EXPECT_TRUE(becomes("Left", sound, 3.0));
  faults.clear();
  EXPECT_THAT(hang(1900),
              AllOf(StartsWith("not read for "), testing::EndsWith(": the reading of "
                                                                   "Left does not return")));
  EXPECT_THAT(faults, ElementsAre("Right late", "Left silent"));
}

// The machine's clock and threads, as on a robot. Nobody asks, and nobody is called.
TEST(SensorHealth, theLogNamesAReadingThatNeverReturns) {
  const test::LogCapture quiet;
  const auto broker = robotOf(kHealthRobot);
  std::latch mayReturn(1);
  std::promise<std::string> told;
  auto line = told.get_future();
  const ko::log::ScopedSink sink(ko::log::Level::warning, [&](const ko::log::Record& record) {
    if (record.message.starts_with("Left is silent")) told.set_value(record.message);
  });
  RealSensorManager sut(broker, eyeFactory());
  dynamic_cast<Fake&>(*sut.getSensorPtr("Left")).onRead = [&] { mayReturn.wait(); };
  sut.subscribe("me");
  const bool isTold = line.wait_for(std::chrono::seconds(60)) == std::future_status::ready;
  mayReturn.count_down();
  sut.unsubscribe("me");
  ASSERT_TRUE(isTold);
  EXPECT_THAT(line.get(), StartsWith("Left is silent: its reading has not returned for "));
}

// Of an error that is over, nobody wants to read again.
TEST_F(SensorHealthTest, theReasonHoldsAnErrorOnlyIfItHasToDoWithIt) {
  const auto fails = [this] {
    left().logTrouble(ko::log::Level::error, "Navigation.Test", "onRead", "no image");
  };
  sut->subscribe("me");
  time.advance(milliseconds(500));
  fails();
  time.advance(milliseconds(600));
  left().stamp = [] { return ko::Clock::now() - milliseconds(620); };
  ASSERT_TRUE(becomes("Left", late, 0.5));
  EXPECT_THAT(health("Left").reason, testing::EndsWith(" s old, limit 0.40 s"));
  left().stamp = [last = ko::Clock::now()] { return last; };
  left().onRead = fails;
  time.advance(milliseconds(2500));
  EXPECT_THAT(health("Left").reason, testing::EndsWith(" s old, limit 0.40 s: no image"));
  left().onRead = [] {};
  left().hasRecord = false;
  ASSERT_TRUE(becomes("Left", silent, 0.9));
  EXPECT_THAT(health("Left").reason, testing::EndsWith(" s, limit 0.40 s"));
  left().hasRecord = true;
  time.advance(milliseconds(100));
  fails();
  time.advance(milliseconds(100));
  sut->setSensorDiagnosis("Left", false);
  EXPECT_EQ(health("Left").reason, "its diagnosis is bad");
}

TEST_F(SensorHealthTest, hardwareLeftOnByAFailedStopIsReportedUntilItStops) {
  for (const bool throws : {false, true}) {
    sut->subscribe("me");
    time.advance(milliseconds(500));
    left().unsubscribeSucceeds = false;
    left().onStop = [throws] {
      if (throws) throw std::runtime_error("no answer");
    };
    EXPECT_EQ(errorOf([&] { sut->unsubscribe("me"); }), throws ? "no answer" : "");
    time.advance(milliseconds(250));
    EXPECT_EQ(health("Left").state, failing);
    EXPECT_THAT(health("Left").reason,
                StartsWith("its hardware was left on, since it failed to stop: "));
    left().unsubscribeSucceeds = true;
    left().onStop = [] {};
    sut->setSensorDiagnosis("Left", true);
    sut->subscribe("me");
    sut->unsubscribe("me");
    EXPECT_EQ(health("Left").state, off);
  }
}

struct HangCase {
  const char* what;
  std::function<void()> Fake::*call;
  std::function<void(SensorManager&)> begin;
  HealthState meanwhile;
  const char* reason;
  HealthState after;
};

// Somebody waits for it, and nobody else does.
TEST_F(SensorHealthTest, hangingHardwareIsReportedUntilItReturns) {
  const std::vector<HangCase> cases{
      {"starts", &Fake::onStart, [](auto& sut) { sut.subscribe("me", "Left"); }, silent,
       "its hardware has been starting for 1.70 s, limit 1.50 s", sound},
      {"stops", &Fake::onStop, [](auto& sut) { sut.unsubscribe("me", "Left"); }, failing,
       "its hardware has been stopping for 1.70 s, limit 1.50 s", off}};
  sut->subscribe("somebody else", "Right");
  time.advance(milliseconds(500));
  for (const HangCase& hang : cases) {
    SCOPED_TRACE(hang.what);
    std::latch hangs(1);
    std::latch mayReturn(1);
    left().*hang.call = [&] {
      hangs.count_down();
      mayReturn.wait();
    };
    std::thread caller([&] { hang.begin(*sut); });
    hangs.wait();
    time.advance(milliseconds(1400));
    EXPECT_THAT(faults, IsEmpty());
    time.advance(milliseconds(300));
    EXPECT_THAT(faults, ElementsAre(std::string("Left ") + getName(hang.meanwhile)));
    EXPECT_EQ(health("Left").reason, hang.reason);
    EXPECT_EQ(health("Right").state, sound);
    mayReturn.count_down();
    caller.join();
    EXPECT_TRUE(becomes("Left", hang.after, 0.3)) << health("Left").reason;
    faults.clear();
  }
}

TEST_F(SensorHealthTest, awaitRecordsWaitsForFreshRecordsAndNamesMissingOnes) {
  for (const bool isWatched : {true, false}) {
    sut->watchHealth(isWatched);
    left().stamp = [] { return ko::Clock::time_point(milliseconds(-9000)); };
    const ScopedSubscription subscription(*sut, "me", {"Left", "Right"});
    const auto start = ko::Clock::now();
    EXPECT_THAT(subscription.awaitRecords(milliseconds(500)),
                ElementsAre(testing::Pair("Left", StartsWith("no fresh record yet, 0.5"))));
    EXPECT_GE(ko::Clock::now() - start, milliseconds(500));
    left().stamp = [] { return ko::Clock::now(); };
    EXPECT_THAT(subscription.awaitRecords(milliseconds(500)), IsEmpty());
    EXPECT_LT(ko::Clock::now() - start, milliseconds(1000));
  }
  const ScopedSubscription toNobody(*sut, "me", {"Nobody"});
  EXPECT_THAT(toNobody.awaitRecords(milliseconds(0)),
              ElementsAre(testing::Pair("Nobody", "there is no such sensor or family")));
}

TEST_F(SensorHealthTest, aSingleSubscribedSensorIsReportedEvenIfItNeverStarts) {
  for (const bool throws : {false, true}) {
    left().subscribeSucceeds = false;
    left().onStart = [throws] {
      if (throws) throw std::runtime_error("no power");
    };
    EXPECT_EQ(errorOf([&] { sut->subscribe("me", "Left"); }), throws ? "no power" : "");
    time.advance(milliseconds(500));
    // An exception ends the start before the task can see it.
    EXPECT_THAT(faults, SizeIs(throws ? 0 : 1));
    EXPECT_THAT(health("Left").reason, StartsWith(throws ? "its start threw an exception: no power"
                                                         : "its diagnosis is bad: "));
    left().subscribeSucceeds = true;
    left().onStart = [] {};
    sut->setSensorDiagnosis("Left", true);
    sut->subscribe("me", "Left");
    EXPECT_TRUE(becomes("Left", sound, 1.0)) << health("Left").reason;
    EXPECT_THAT(faults, ElementsAre("Left failing"));
    sut->unsubscribe("me");
    time.advance(milliseconds(500));
    faults.clear();
  }
}

TEST_F(SensorHealthTest, aCallbackThatEndsTheLastSensorIsToldThatItIsOff) {
  std::vector<std::string> states;
  sut->onHealthChanged([&](const std::string& sensor, const SensorHealth& now) {
    states.push_back(sensor + " " + getName(now.state));
    if (now.state == sound) sut->unsubscribe("me");
  });
  sut->subscribe("me", "Left");
  time.advance(milliseconds(1500));
  EXPECT_THAT(states, ElementsAre("Left sound", "Left off"));
}

TEST_F(SensorHealthTest, aKindThatReportsChangesMayHaveNothingToReport) {
  const auto broker =
      robotOf("<robot name='r'><link name='base'/><sensor name='Bell' type='Bell'/></robot>");
  RealSensorManager bells(broker, factoryOf({91, "Bell", "Bells", Model::PointMeaning::scan,
                                             Model::Silence::never, false}));
  dynamic_cast<Fake&>(*bells.getSensorPtr("Bell")).hasRecord = false;
  bells.subscribe("me");
  time.advance(milliseconds(3000));
  EXPECT_EQ(bells.getHealth("Bell")->reason,
            "no record, which is normal: it has nothing to report");
}

// As of people, whose last sighting stays in memory until the next one.
TEST_F(SensorHealthTest, aReportOfAChangeIsLateOnlyIfItWasNotThereInTime) {
  healthOf(*sut).describe(left(), {.hasRate = false}, milliseconds(100));
  auto reported = ko::Clock::now();
  left().stamp = [&] { return reported; };
  time.advance(milliseconds(700));
  sut->subscribe("me");
  time.advance(milliseconds(1000));
  EXPECT_EQ(health("Left").reason, "its records are fresh") << "it was reported before";
  right().onRead = [&] {
    reported = ko::Clock::now();
    ko::os::msleep(900);
    right().onRead = [] {};
  };
  time.advance(milliseconds(4000));
  EXPECT_EQ(health("Left").reason, "its records are fresh") << "nobody read it";
  sut->watchHealth(false);
  reported = ko::Clock::now();
  time.advance(milliseconds(1000));
  sut->watchHealth(true);
  time.advance(milliseconds(2000));
  EXPECT_EQ(health("Left").reason, "its records are fresh") << "nobody watched it";
  reported = ko::Clock::now() - milliseconds(600);
  EXPECT_TRUE(becomes("Left", late, 0.3)) << health("Left").reason;
}

TEST_F(SensorHealthTest, theFirstReportOfAChangeIsLateIfReadingsShowedThatItHadNotCome) {
  healthOf(*sut).describe(left(), {.hasRate = false}, milliseconds(100));
  for (const auto& [age, expected] : {std::pair{600, late}, {1600, sound}}) {
    SCOPED_TRACE(age);
    left().hasRecord = false;
    sut->subscribe("me");
    time.advance(milliseconds(1000));
    left().stamp = [at = ko::Clock::now() - milliseconds(age)] { return at; };
    left().hasRecord = true;
    time.advance(milliseconds(300));
    EXPECT_EQ(health("Left").state, expected) << health("Left").reason;
    sut->unsubscribe("me");
    time.advance(milliseconds(300));
  }
}

TEST_F(SensorHealthTest, noSensorIsLateBecauseHealthWasOff) {
  sut->subscribe("me");
  time.advance(milliseconds(500));
  sut->watchHealth(false);
  // Asked all the time: no leap of the clock excuses it.
  for (int i = 0; i < 30; ++i) {
    time.advance(milliseconds(100));
    EXPECT_EQ(health("Left").state, sound);
  }
  sut->watchHealth(true);
  EXPECT_EQ(health("Left").state, sound) << health("Left").reason;
  time.advance(boost::chrono::seconds(3));
  EXPECT_THAT(faults, testing::IsEmpty());
}

// As of sonars, which some robots switch off on the way.
TEST_F(SensorHealthTest, whatMayBeSilentOnTheWayIsNotSoundAgainBecauseTheRobotMoves) {
  healthOf(*sut).describe(left(), {.silence = Model::Silence::whileMoving}, milliseconds(100));
  const auto go = [this](float turn) { motion->velocity = std::vector<float>{0.0f, 0.0f, turn}; };
  sut->subscribe("me");
  EXPECT_TRUE(becomes("Left", sound, 1.0));
  left().hasRecord = false;
  time.advance(milliseconds(3000));
  EXPECT_EQ(health("Left").reason, "no record, which is normal: the robot moves");
  go(0.0f);
  EXPECT_TRUE(becomes("Left", silent, 1.0));
  go(0.5f);
  time.advance(milliseconds(5000));
  EXPECT_EQ(health("Left").state, silent) << "it has not measured since";
  EXPECT_THAT(health("Left").reason, HasSubstr("; not seen for 5.0"));
  left().hasRecord = true;
  EXPECT_TRUE(becomes("Left", sound, 3.0));
}

TEST_F(SensorHealthTest, limitsAreChangedAndSwitchedOffByName) {
  EXPECT_NEAR(sut->getHealthLimit("Right", HealthLimit::age).value(), 0.7, 1e-6);
  EXPECT_EQ(sut->getHealthLimit("Right", HealthLimit::distance), 0.7);
  EXPECT_THAT(sut->getLastTrouble("Right").value().message, StartsWith("Right: limit \"old=3\": "));
  EXPECT_TRUE(sut->setHealthLimit(parseHealthRule("Left:silence=off")));
  EXPECT_TRUE(sut->setHealthLimit(parseHealthRule("Eyes:turn=off")));
  EXPECT_TRUE(sut->setHealthLimit(parseHealthRule("age=0.2")));
  EXPECT_FALSE(sut->setHealthLimit(parseHealthRule("No:age=0.2")));
  EXPECT_THAT(log.lines(), Contains("warning Navigation.SensorManager.setHealthLimit: Invalid "
                                    "name in setHealthLimit: \"No\""));
  sut->subscribe("me");
  time.advance(milliseconds(500));
  left().hasRecord = false;
  right().onRead = [] {};
  time.advance(milliseconds(5000));
  EXPECT_THAT(faults, IsEmpty());
  right().stamp = [] { return ko::Clock::now() - milliseconds(300); };
  EXPECT_TRUE(becomes("Right", late, 0.2));
}

// Two sensors must compare a range that changes by a third, and then agree three times in a row.
TEST_F(SensorHealthTest, limitsOfDisagreementAndRecoveryAreSecondsToBadHealthAndBack) {
  const HealthCase& contradiction = kHealthCases[6];
  sut->setHealthLimit(parseHealthRule("disagreement=off"));
  sut->subscribe("me");
  time.advance(milliseconds(2000));
  // Where the robot stands, nothing shows which one stays behind.
  sut->setHealthLimit(parseHealthRule("disagreement=3"));
  motion->velocity = std::vector<float>{0.0f, 0.0f, 0.0f};
  time.advance(milliseconds(1000));
  contradiction.fail(*this);
  time.advance(milliseconds(9000));
  EXPECT_THAT(faults, IsEmpty());
  contradiction.repair(*this);
  time.advance(milliseconds(5000));
  motion->velocity = std::vector<float>{0.0f, 0.0f, 0.5f};
  for (const auto& [disagreement, recovery] : {std::pair{3, 1}, {9, 1}, {3, 5}}) {
    sut->setHealthLimit(parseHealthRule("disagreement=" + std::to_string(disagreement)));
    sut->setHealthLimit(parseHealthRule("recovery=" + std::to_string(recovery)));
    ASSERT_TRUE(becomes("Left", sound, 4.0)) << health("Left").reason;
    const auto secondsUntil = [this](HealthState state) {
      const auto start = ko::Clock::now();
      EXPECT_TRUE(becomes("Left", state, 20.0)) << health("Left").reason;
      return boost::chrono::duration<double>(ko::Clock::now() - start).count();
    };
    contradiction.fail(*this);
    EXPECT_NEAR(secondsUntil(suspect), disagreement + 1.5, 1.0);
    contradiction.repair(*this);
    EXPECT_NEAR(secondsUntil(sound), recovery + 1.8, 0.5);
  }
}

TEST_F(SensorHealthTest, withoutLimitsNothingIsAFaultButWhatSaysThatItFails) {
  for (std::size_t i = 0; i < kHealthLimitCount; ++i) {
    const std::string name = getName(static_cast<HealthLimit>(i));
    ASSERT_TRUE(sut->setHealthLimit(parseHealthRule(name + "=off")));
  }
  sut->subscribe("me");
  for (const HealthCase& fault : kHealthCases) {
    SCOPED_TRACE(fault.what);
    faults.clear();
    fault.fail(*this);
    time.advance(boost::chrono::seconds(9));
    EXPECT_THAT(faults, SizeIs(fault.state == failing ? 1 : 0));
    fault.repair(*this);
    EXPECT_TRUE(becomes("Left", sound, 1.9)) << health("Left").reason;
  }
}

// The hardware's clock dates the records, and stands for the device manager's.
TEST_F(SensorHealthTest, aWrongClockAloneChangesNoHealth) {
  const auto start = ko::Clock::now();
  const std::map<const char*, std::function<ko::Duration(ko::Duration)>> clocks{
      {"stops", [](ko::Duration) { return ko::Duration::zero(); }},
      {"is 20 s behind", [](ko::Duration t) { return t - milliseconds(20'000); }},
      {"is 20 s ahead", [](ko::Duration t) { return t + milliseconds(20'000); }},
      {"takes a hundredth", [](ko::Duration t) { return t / 100; }},
      {"takes a hundredfold", [](ko::Duration t) { return t * 100; }}};
  sut->subscribe("me");
  for (const auto& [what, clock] : clocks) {
    SCOPED_TRACE(what);
    const auto deviceTime = [&] { return start + clock(ko::Clock::now() - start); };
    left().stamp = right().stamp = deviceTime;
    for (int cycle = 0; cycle < 300; ++cycle) {
      broker->planAnswer("DCM.getTime", ko::Clock::toInt32ms(deviceTime()));
      time.advance(milliseconds(100));
    }
    EXPECT_THAT(reasons, IsEmpty());
    EXPECT_EQ(health("Left").state, sound);
  }
}

}  // namespace
}  // namespace QV::sensor
