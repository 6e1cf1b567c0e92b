#include <gmock/gmock.h>

#include "sensor/simulation/simulated_sensor_manager.h"
#include "tests/support/counted_heap.h"

namespace QV::sensor {
namespace {

constexpr std::size_t kRays = 300;

// A list of points is made by the sensor, moved into the cache, copied for the reader and moved on.
TEST(SimulatedReading, takesPointsFromTheHeapOnceForTheCacheAndOnceForTheReader) {
  OccupancyMap map(80, 60, 0.05f, {}, 0.0f);
  SimulatedSensorManager sut(-1, &map);
  sut.subscribe("me");
  sut.setPose2D({2.0f, 1.5f, 0.0f}, {2.0f, 1.5f, 0.0f});
  ASSERT_EQ(sut.getMetricalData().at(0).points.size(), kRays);
  const test::Heap start{.bigSize = kRays * sizeof(Math::Position3D)};
  const auto expectLists = [&](int expected) {
    EXPECT_EQ(test::heap.bigOnes, expected);
    EXPECT_LT(test::heap.allocations, 20 * expected);
    test::heap = start;
  };
  test::heap = start;
  sut.getMetricalData();
  expectLists(2);
  sut.getMetricalData("Laser");
  expectLists(2);
  sut.getMetricalData({"Laser", "nobody"});
  expectLists(4);
}

}  // namespace
}  // namespace QV::sensor
