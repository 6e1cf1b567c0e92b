#include "tests/sensor/perception/sensor_3d_fixture.h"
#include "tests/support/counted_heap.h"

namespace QV::sensor {
namespace {

// Fresh lists of a whole image's points would cost more in pages than the image in work.
TEST_F(Sensor3DTest, aCycleUsesTheListsOfReplacedRecordsAgain) {
  startBefore(1000);
  const auto cycle = [&] { time.advance(boost::chrono::milliseconds(100)); };
  for (int i = 0; i < 4; ++i) cycle();
  ASSERT_EQ(sut->getData().at(0).points.size(), depth.total());
  test::heap = {.bigSize = depth.total() * sizeof(Math::Position3D)};
  for (int i = 0; i < 4; ++i) cycle();
  EXPECT_EQ(test::heap.bigOnes, 0);
}

}  // namespace
}  // namespace QV::sensor
