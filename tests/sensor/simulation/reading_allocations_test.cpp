#include <cstdlib>
#include <new>

#include <gmock/gmock.h>

#include "sensor/simulation/simulated_sensor_manager.h"

namespace {

constexpr std::size_t kRays = 300;
constexpr std::size_t kPoints = kRays * sizeof(QV::Math::Position3D);

/** What this thread took from the heap: how often, and how often the points of a whole scan. */
struct Heap {
  int allocations = 0;
  int pointLists = 0;
};
thread_local Heap heap;

}  // namespace

// Not inlined: else the compiler takes the new and the free for a mismatch.
[[gnu::noinline]] void* operator new(std::size_t size) {
  ++heap.allocations;
  heap.pointLists += size >= kPoints;
  if (void* memory = std::malloc(size)) return memory;
  throw std::bad_alloc();
}
[[gnu::noinline]] void operator delete(void* memory) noexcept {
  std::free(memory);
}
[[gnu::noinline]] void operator delete(void* memory, std::size_t) noexcept {
  std::free(memory);
}

namespace QV::sensor {
namespace {

// A list of points is made by the sensor, moved into the cache, copied for the reader and moved on.
TEST(SimulatedReading, takesPointsFromTheHeapOnceForTheCacheAndOnceForTheReader) {
  OccupancyMap map(80, 60, 0.05f, {}, 0.0f);
  SimulatedSensorManager sut(-1, &map);
  sut.subscribe("me");
  sut.setPose2D({2.0f, 1.5f, 0.0f}, {2.0f, 1.5f, 0.0f});
  ASSERT_EQ(sut.getMetricalData().at(0).points.size(), kRays);
  const auto expectLists = [](int expected) {
    EXPECT_EQ(heap.pointLists, expected);
    EXPECT_LT(heap.allocations, 20 * expected);
    heap = {};
  };
  heap = {};
  sut.getMetricalData();
  expectLists(2);
  sut.getMetricalData("Laser");
  expectLists(2);
  sut.getMetricalData({"Laser", "nobody"});
  expectLists(4);
}

}  // namespace
}  // namespace QV::sensor
