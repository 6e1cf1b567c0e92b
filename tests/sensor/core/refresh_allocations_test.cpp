#include <chrono>
#include <cstddef>
#include <functional>
#include <future>
#include <latch>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "platform/ko/simulated_time.h"
#include "sensor/core/internal/health_inside.h"
#include "tests/support/counted_heap.h"
#include "tests/support/fake_sensor.h"

namespace QV::sensor {
namespace {

constexpr std::size_t kPoints = 10000;

TEST(SensorManager, copiesTheListsOfPointsOnceForEachReaderAndNeverForTheCache) {
  test::FakeManager sut;
  for (const char* const name : {"Front", "Back", "Left"}) {
    sut.add(name, "Sonar")->points.resize(kPoints);
  }
  ASSERT_TRUE(sut.subscribe("reader"));
  sut.xUpdateData();
  const auto countLists = [](auto call) {
    test::heap = {.bigSize = kPoints * sizeof(Math::Position3D)};
    call();
    return test::heap.bigOnes;
  };
  // The sensors make three lists.
  EXPECT_EQ(countLists([&] { sut.xUpdateData(); }), 3);
  // The reader gets a copy, also by name.
  EXPECT_EQ(countLists([&] { EXPECT_EQ(sut.getMetricalData().size(), 3u); }), 6);
  EXPECT_EQ(countLists([&] { EXPECT_EQ(sut.getMetricalData("Sonar").size(), 3u); }), 6);
}

/** Three sensors that see a wall come nearer, each in its way, and a robot that turns. */
struct WatchedManager : test::FakeManager {
  WatchedManager() {
    using enum Model::PointMeaning;
    for (const auto meaning : {arc, scan, sighting}) {
      const auto sensor = add(std::to_string(static_cast<int>(meaning)), "Wall");
      sensor->points.assign(300, {1.5f, 0.0f, 0.0f});
      sensor->stamp = [] { return ko::Clock::now(); };
      sensor->onRead = [&points = sensor->points] { points.front().x = points.back().x -= 0.001f; };
      healthOf(*this).describe(*sensor, {.points = meaning, .showsMotion = true},
                               boost::chrono::milliseconds(100));
    }
    healthOf(*this).setRefreshed(true);
  }

  void refreshOnce() {
    xUpdateData();
    healthOf(*this).noteVelocity({0.0f, 0.0f, 0.5f});
    healthOf(*this).tick();
  }
  void refresh(ko::SimulatedTime& time, int cycles) {
    for (; cycles > 0; --cycles) {
      time.advance(boost::chrono::milliseconds(100));
      refreshOnce();
    }
  }
};

TEST(SensorManager, healthAllocatesNoMemory) {
  ko::SimulatedTime time;
  WatchedManager sut;
  ASSERT_TRUE(sut.subscribe("reader"));
  sut.getHealth();  // it watches from the first question on
  const auto allocationsOf = [&](bool watched) {
    sut.watchHealth(watched);
    sut.refresh(time, 20);
    test::heap = {};
    sut.refresh(time, 20);
    return test::heap.allocations;
  };
  const int unwatched = allocationsOf(false);
  EXPECT_EQ(allocationsOf(true), unwatched);
  for (const auto& [name, health] : sut.getHealth()) {
    EXPECT_EQ(health.reason, "its records are fresh") << name;
  }
}

// Readers copy with the lock held, so each can be stopped there.
TEST(SensorManager, healthNeedsNoLockThatReadersHold) {
  ko::SimulatedTime time;
  WatchedManager sut;
  ASSERT_TRUE(sut.subscribe("reader"));
  sut.getHealth();
  sut.refresh(time, 5);
  sut.getSensorPtr("0")->keepTrouble(ko::log::Level::error, "Navigation.Sensor", "xGetData",
                                     "a text that takes memory");
  const std::vector<std::function<void()>> questions{
      [&] { sut.getHealth(); }, [&] { sut.getSubscribers(); }, [&] { sut.getLastTrouble("0"); }};
  std::latch held(3);
  std::latch released(1);
  const std::function<void()> hold = [&] {
    held.count_down();
    released.wait();
  };
  std::vector<std::jthread> readers;
  for (const auto& question : questions) {
    readers.emplace_back([&] {
      test::heap.onNext = &hold;
      question();
    });
  }
  held.wait();
  time.advance(boost::chrono::milliseconds(100));
  const auto refreshed = std::async(std::launch::async, [&] { sut.refreshOnce(); });
  EXPECT_EQ(refreshed.wait_for(std::chrono::seconds(60)), std::future_status::ready);
  released.count_down();
}

}  // namespace
}  // namespace QV::sensor
