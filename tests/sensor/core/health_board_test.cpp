#include "sensor/core/internal/health_board.h"

#include <functional>
#include <latch>
#include <map>
#include <thread>

#include "platform/ko/simulated_time.h"
#include "tests/support/fake_sensor.h"
#include "tests/support/log_capture.h"
#include "tests/support/vocabulary.h"

namespace QV::sensor {
namespace {

using Fake = test::FakeSensor;

constexpr int kCycles = 300;
/** The number of times that somebody asks in each cycle. */
constexpr int kQuestions = 50;

/** The time of our clock after so many cycles of 100 ms, in ms. */
const std::map<const char*, std::function<double(double cycles)>> kClocks{
    {"stops", [](double) { return 1000.0; }},
    {"takes a hundredth", [](double cycles) { return 1000.0 + cycles; }},
    {"takes a hundredfold", [](double cycles) { return 1000.0 + 10'000.0 * cycles; }},
    {"jumps back",
     [](double cycles) { return 5e5 + 100.0 * cycles - 5e4 * std::floor(cycles / 30.0); }},
    {"jumps ahead", [](double cycles) { return 100.0 * cycles + 5e4 * std::floor(cycles / 30.0); }},
    // By 0.1 s, 0.2 s, ... 0.9 s.
    {"jumps ahead a little", [](double cycles) {
       const double jumps = std::floor(cycles / 30.0);
       return 100.0 * cycles + 50.0 * jumps * (jumps + 1.0);
     }}};

/** Two sensors, of which our clock dates one, and that of the hardware the other. */
struct HealthBoardTest : testing::Test {
  HealthBoardTest() {
    manager.add("Ours", "F")->stamp = [] { return ko::Clock::now(); };
    hardware->stamp = [this] { return hardwareTime; };
    for (const char* name : {"Ours", "Hardware"}) {
      sensors[name] = manager.getSensorPtr(name);
      sensors[name]->subscribe("me");
    }
    sut.setRefreshed(true);
  }

  // Objects made before the simulated time use the machine's clock, so each test can set any time.
  void runCycle(const std::function<double(double part)>& clock) {
    for (int i = 0; i < kQuestions; ++i) {
      const ko::SimulatedTime time{timeOf(clock(static_cast<double>(i) / kQuestions))};
      if (i == 0) refresh();
      for (const auto& [name, health] : sut.getAll()) {
        if (isFault(health.state)) faults[name] = health.reason;
      }
    }
  }
  static ko::Clock::time_point timeOf(double milliseconds) {
    return ko::Clock::time_point(ko::Duration(static_cast<std::int64_t>(milliseconds * 1e6)));
  }
  void refresh() {
    hardwareTime += boost::chrono::milliseconds(100);
    if (sut.asksDeviceTime()) sut.noteDeviceTime(hardwareTime);
    sut.tick();
    for (const auto& [name, sensor] : sensors) sensor->getData();
    sut.tick();
  }

  test::FakeManager manager;
  boost::shared_ptr<Fake> hardware = manager.add("Hardware", "F");
  ko::Clock::time_point hardwareTime;
  HealthBoard::Sensors sensors;
  HealthBoard sut{sensors};
  std::map<std::string, std::string> faults;
};

TEST_F(HealthBoardTest, ignoresFaultsCausedByTheProcessClockAlone) {
  for (const auto& [what, clock] : kClocks) {
    SCOPED_TRACE(what);
    for (int cycle = 0; cycle < kCycles; ++cycle) {
      runCycle([&clock, cycle](double part) { return clock(cycle + part); });
    }
    EXPECT_THAT(faults, IsEmpty());
    // Faults are detected again when the clock is right.
    const auto runRight = [this, end = clock(kCycles - 1.0 / kQuestions)](int from, int until) {
      for (int cycle = from; cycle < until; ++cycle) {
        runCycle([end, cycle](double part) { return end + 100.0 * (cycle + part); });
      }
    };
    hardware->hasRecord = false;
    runRight(0, 20);
    EXPECT_THAT(faults, ElementsAre(testing::Pair("Hardware", StartsWith("no record for "))));
    hardware->hasRecord = true;
    runRight(20, 50);
    faults.clear();
  }
}

TEST_F(HealthBoardTest, aTickJudgesUnlessAnotherDidWithinThePeriod) {
  ko::SimulatedTime time{timeOf(1000.0)};
  int told = 0;
  sut.setCallback([&told](const std::string&, const SensorHealth&) { ++told; });
  sut.tick(milliseconds(100));
  const int before = told;
  hardware->setDiagnosis(false);
  time.advance(milliseconds(99));
  sut.tick(milliseconds(100));
  EXPECT_EQ(told, before);
  time.advance(milliseconds(1));
  sut.tick(milliseconds(100));
  EXPECT_EQ(told, before + 1);
}

TEST(SensorManager, knowsAtTheFirstQuestionWhatTheHardwareDidBefore) {
  test::FakeManager sut;
  const auto read = sut.add("Read", "F");
  const auto throwing = sut.add("Throwing", "F");
  const auto leftOn = sut.add("LeftOn", "F");
  read->stamp = [] { return ko::Clock::now(); };
  throwing->onStart = [] { throw std::runtime_error("no power"); };
  leftOn->unsubscribeSucceeds = false;
  sut.subscribe("me", {"LeftOn", "Read"});
  sut.unsubscribe("me", "LeftOn");
  EXPECT_THROW(sut.subscribe("me", "Throwing"), std::runtime_error);
  sut.getMetricalData("Read");
  std::map<std::string, HealthState> states;
  for (const auto& [name, health] : sut.getHealth()) states[name] = health.state;
  EXPECT_THAT(states, ElementsAre(testing::Pair("LeftOn", HealthState::failing),
                                  testing::Pair("Read", HealthState::sound),
                                  testing::Pair("Throwing", HealthState::failing)));
}

TEST(SensorManager, watchesFromAQuestionOnThatComesDuringAReading) {
  test::FakeManager sut;
  const auto sensor = sut.add("Laser", "F");
  sut.subscribe("me");
  sensor->onRead = [&] { sut.getHealth(); };
  sut.getMetricalData();
  sensor->onRead = [] { throw std::runtime_error("no answer"); };
  sut.getMetricalData();
  EXPECT_EQ(sut.getHealth("Laser")->state, HealthState::failing);
}

/** Asks when it goes. */
struct LastQuestion {
  explicit LastQuestion(SensorManager& manager) : manager(manager) {}
  ~LastQuestion() { manager.getHealth(); }
  SensorManager& manager;
};

TEST(SensorManager, whatACallbackHoldsMayAskForHealthAsItGoes) {
  test::FakeManager sut;
  sut.add("Laser", "F");
  sut.subscribe("me");
  int calls = 0;
  sut.onHealthChanged([&sut, &calls, question = boost::make_shared<LastQuestion>(sut)](
                          const std::string&, const SensorHealth&) {
    ++calls;
    sut.onHealthChanged({});
  });
  sut.setSensorDiagnosis("Laser", false);
  sut.getHealth();
  EXPECT_EQ(calls, 1);
}

/** A callback that says when it is copied. */
struct CopiedCallback {
  explicit CopiedCallback(const std::function<void()>& onCopy) : onCopy(onCopy) {}
  CopiedCallback(const CopiedCallback& other) : onCopy(other.onCopy) { onCopy(); }
  void operator()(const std::string&, const SensorHealth&) const {}
  std::function<void()> onCopy;
};

TEST(SensorManager, aCallbackIsNotReplacedWhileItIsTaken) {
  test::FakeManager sut;
  sut.add("Laser", "F");
  std::latch taking(1);
  std::atomic<bool> isArmed{false};
  std::atomic<bool> isReplaced{false};
  sut.onHealthChanged(CopiedCallback([&] {
    if (!isArmed.exchange(false)) return;
    taking.count_down();
    for (int i = 0; i < 200; ++i) std::this_thread::yield();
    EXPECT_FALSE(isReplaced);
  }));
  sut.setSensorDiagnosis("Laser", false);
  std::thread other([&] {
    taking.wait();
    sut.onHealthChanged({});
    isReplaced = true;
  });
  isArmed = true;
  sut.getHealth();
  other.join();
}

TEST(SensorManager, limitsAndTroublesMayChangeOnAllThreads) {
  const test::LogCapture quiet;
  test::FakeManager sut;
  sut.add("Laser", "F");
  std::latch go(2);
  const auto meddle = [&](const std::string& text) {
    go.arrive_and_wait();
    for (int i = 0; i < 1000; ++i) {
      sut.setHealthLimit({"Laser", HealthLimit::age, i % 2 + 1.0});
      EXPECT_GE(sut.getHealthLimit("Laser", HealthLimit::age).value(), 1.0);
      sut.logTrouble("Missing", "Test", "meddle", text);
      EXPECT_THAT(sut.getLastTrouble("Missing")->message, SizeIs(40));
      EXPECT_THAT(sut.getHealth(), SizeIs(2));
    }
  };
  std::thread other(meddle, std::string(40, 'a'));
  meddle(std::string(40, 'b'));
  other.join();
}

TEST(HealthRule, refusesAMalformedRuleAndSaysWhatIsExpected) {
  const std::string names =
      "start, silence, age, reading, garbage, turn, distance, disagreement, recovery";
  const std::vector<std::pair<const char*, std::string>> cases{
      {"age", "[NAME:]LIMIT=VALUE or [NAME:]LIMIT=off expected"},
      {"Sonar:old=1", "one of " + names + " expected"},
      {"age=", "a number above 0, or off, expected"},
      {"age=-1", "a number above 0, or off, expected"}};
  for (const auto& [text, expected] : cases) {
    EXPECT_EQ(errorOf([&] { parseHealthRule(text); }),
              "limit \"" + std::string(text) + "\": " + expected);
  }
}

}  // namespace
}  // namespace QV::sensor
