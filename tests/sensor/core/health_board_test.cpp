#include "sensor/core/internal/health_board.h"

#include <functional>
#include <map>

#include "platform/ko/simulated_time.h"
#include "tests/support/fake_sensor.h"
#include "tests/support/vocabulary.h"

namespace QV::sensor {
namespace {

using Fake = test::FakeSensor;

constexpr int kCycles = 300;

/** The time of our clock in each cycle of 100 ms, in ms. */
const std::map<const char*, std::function<int(int cycle)>> kClocks{
    {"stops", [](int) { return 1000; }},
    {"takes a hundredth", [](int cycle) { return 1000 + cycle; }},
    {"takes a hundredfold", [](int cycle) { return 1000 + 10'000 * cycle; }},
    {"jumps back", [](int cycle) { return 500'000 + 100 * cycle - 50'000 * (cycle / 30); }},
    {"jumps ahead", [](int cycle) { return 1000 + 100 * cycle + 50'000 * (cycle / 30); }}};

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
  void runCycle(int milliseconds) {
    const ko::SimulatedTime time{ko::Clock::time_point(boost::chrono::milliseconds(milliseconds))};
    hardwareTime += boost::chrono::milliseconds(100);
    if (sut.asksDeviceTime()) sut.noteDeviceTime(hardwareTime);
    sut.tick();
    for (const auto& [name, sensor] : sensors) sensor->getData();
    sut.tick();
    for (const auto& [name, health] : sut.getAll()) {
      if (isFault(health.state)) faults[name] = health.reason;
    }
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
    for (int cycle = 0; cycle < kCycles; ++cycle) runCycle(clock(cycle));
    EXPECT_THAT(faults, IsEmpty());
    // Faults are detected again when the clock is right.
    hardware->hasRecord = false;
    for (int cycle = 1; cycle <= 20; ++cycle) runCycle(clock(kCycles - 1) + 100 * cycle);
    EXPECT_THAT(faults, ElementsAre(testing::Pair("Hardware", StartsWith("no record for "))));
    hardware->hasRecord = true;
    for (int cycle = 21; cycle <= 50; ++cycle) runCycle(clock(kCycles - 1) + 100 * cycle);
    faults.clear();
  }
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
