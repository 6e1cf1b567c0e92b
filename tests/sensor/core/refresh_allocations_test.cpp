#include <cstddef>

#include <gtest/gtest.h>

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

}  // namespace
}  // namespace QV::sensor
