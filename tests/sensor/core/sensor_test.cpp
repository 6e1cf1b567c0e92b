#include "sensor/core/sensor.h"

#include <latch>
#include <stdexcept>
#include <thread>

#include "tests/support/fake_sensor.h"
#include "tests/support/vocabulary.h"

namespace QV::sensor {
namespace {

using test::FakeSensor;

struct SensorTest : testing::Test {
  FakeSensor sut{"Left", "Sonar"};
};

TEST_F(SensorTest, keepsItsLastErrorEvenIfTheLogLevelHidesIt) {
  ko::log::setLevel("Test", ko::log::Level::silent);
  const auto troubleOf = [](const FakeSensor& sensor) {
    const auto trouble = sensor.getLastTrouble();
    return trouble ? trouble->method + ": " + trouble->message : "";
  };
  EXPECT_EQ(troubleOf(sut), "");
  sut.keepTrouble(ko::log::Level::info, "Test", "read", "Not there yet.");
  EXPECT_EQ(troubleOf(sut), "read: Not there yet.");
  sut.subscribeSucceeds = false;
  sut.subscribe("a");
  EXPECT_EQ(troubleOf(sut), "xSubscribeToHardware: The hardware failed.");
  sut.onStart = [&] { sut.logTrouble(ko::log::Level::warning, "Test", "start", "No power."); };
  sut.setDiagnosis(true);
  EXPECT_EQ(troubleOf(sut), "start: No power.");
  sut.onStart = [] { throw std::runtime_error("no bus"); };
  EXPECT_THROW(sut.setDiagnosis(true), std::runtime_error);
  sut.keepTrouble(ko::log::Level::info, "Test", "read", "Not there yet.");
  EXPECT_EQ(troubleOf(sut), "xSubscribeToHardware: no bus");
  ko::log::resetLevel("Test");
}

TEST_F(SensorTest, readingAndSubscribingAreThreadSafe) {
  std::latch go(4);
  const auto churn = [&](const std::string& subscriber) {
    go.arrive_and_wait();
    for (int i = 0; i < 2000; ++i) {
      sut.subscribe(subscriber);
      sut.enable(i % 3 != 0);
      sut.unsubscribe(subscriber);
    }
  };
  std::atomic<bool> wrong{false};
  const auto read = [&] {
    go.arrive_and_wait();
    for (int i = 0; i < 4000; ++i) {
      if (sut.getData().size() > 1) wrong = true;
      sut.isStarted();
    }
  };
  sut.onRead = [&] {
    if (!sut.hardwareOn) wrong = true;
  };
  std::thread threads[] = {std::thread(churn, "a"), std::thread(churn, "b"), std::thread(read),
                           std::thread(read)};
  for (auto& thread : threads) thread.join();
  EXPECT_FALSE(wrong);
  EXPECT_FALSE(sut.isStarted());
  EXPECT_EQ(sut.starts, sut.stops);
}

}  // namespace
}  // namespace QV::sensor
