#include "sensor/perception/internal/spare_points.h"

#include <gmock/gmock.h>

namespace QV::sensor {
namespace {

TEST(SparePoints, givesTheSmallestBufferThatFitsElseANewOne) {
  SparePoints sut;
  for (const std::size_t size : {30, 10, 20}) sut.give(SparePoints::Points(size));
  for (const auto& [asked, capacity] :
       {std::pair<std::size_t, std::size_t>{11, 20}, {11, 30}, {11, 11}, {10, 10}}) {
    const auto points = sut.take(asked);
    EXPECT_EQ(points.size(), asked);
    EXPECT_EQ(points.capacity(), capacity);
  }
}

TEST(SparePoints, forgetsTheOldestFirst) {
  SparePoints sut;
  for (const std::size_t size : {10, 20, 30}) sut.give(SparePoints::Points(size));
  sut.trim(59);
  EXPECT_EQ(sut.take(1).capacity(), 20u);
  sut.trim(30);
  EXPECT_EQ(sut.take(1).capacity(), 30u);
}

}  // namespace
}  // namespace QV::sensor
