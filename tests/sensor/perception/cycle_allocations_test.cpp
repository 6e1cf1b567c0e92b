#include "tests/sensor/perception/sensor_3d_fixture.h"
#include "tests/support/counted_heap.h"

namespace QV::sensor {
namespace {

// Fresh megabytes would cost more in pages than the image in work. The wall comes and goes, so that
// no list of points is as long as the one before.
TEST_F(Sensor3DTest, aCycleUsesTheMemoryOfReplacedRecordsAndImagesAgain) {
  startBefore(1000);
  int count = 0;
  const auto cycle = [&] {
    ++count;
    fill({0, 0, 320, 100 + 10 * (count % 5)}, 1000 + 500 * (count % 2));
    fill({0, 140, 320, 100}, 2000);
    time.advance(boost::chrono::milliseconds(100));
  };
  for (int i = 0; i < 10; ++i) cycle();
  ASSERT_GE(sut->getData().size(), 2u);
  test::heap = {.bigSize = depth.total() * sizeof(std::uint16_t)};
  for (int i = 0; i < 10; ++i) cycle();
  EXPECT_EQ(test::heap.bigOnes, 0);
}

}  // namespace
}  // namespace QV::sensor
