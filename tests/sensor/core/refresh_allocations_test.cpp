#include <cstddef>

#include <gtest/gtest.h>

#include "platform/ko/simulated_time.h"
#include "sensor/core/internal/health_board.h"
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
  // Those that the sensors make.
  EXPECT_EQ(countLists([&] { sut.xUpdateData(); }), 3);
  // And a copy for the reader, also by name.
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
      xHealth().describe(*sensor, {.points = meaning, .showsMotion = true},
                         boost::chrono::milliseconds(100));
    }
    xHealth().setRefreshed(true);
  }

  void refresh(ko::SimulatedTime& time, int cycles) {
    for (; cycles > 0; --cycles) {
      time.advance(boost::chrono::milliseconds(100));
      xUpdateData();
      xHealth().noteVelocity({0.0f, 0.0f, 0.5f});
      xHealth().tick();
    }
  }
};

TEST(SensorManager, takesNoMemoryToWatchItsSensors) {
  ko::SimulatedTime time;
  WatchedManager sut;
  ASSERT_TRUE(sut.subscribe("reader"));
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

}  // namespace
}  // namespace QV::sensor
