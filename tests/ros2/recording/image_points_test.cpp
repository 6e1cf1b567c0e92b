#include "ros2/recording/internal/image_points.h"

#include <cmath>
#include <stdexcept>
#include <utility>

#include <gmock/gmock.h>

namespace QV::ros2 {
namespace {

using Math::MetricalData;
using Math::Position3D;

constexpr ImageExtents kExtents{1.1f, 0.9f};

/** Millimetres that differ from pixel to pixel. */
cv::Mat_<std::uint16_t> someDepth() {
  cv::Mat_<std::uint16_t> depth(30, 40);
  for (int i = 0; i < 30 * 40; ++i) depth(i / 40, i % 40) = static_cast<std::uint16_t>(400 + 7 * i);
  return depth;
}

qv_msgs::ImagePoints runsOf(std::vector<std::int32_t> skips, std::vector<std::uint32_t> lengths) {
  return {"", 0, kExtents.width, kExtents.height, std::move(skips), std::move(lengths)};
}

/** Two records, the second of which begins before the end of the first. */
std::vector<MetricalData> recordsOf(const cv::Mat_<std::uint16_t>& depth) {
  std::vector<MetricalData> records(2);
  records[0].points = decodePoints(runsOf({3, 10, 6}, {30, 100, 1}), depth);
  records[1].points = decodePoints(runsOf({36, 20}, {1, 300}), depth);
  return records;
}

TEST(ImagePoints, aPixelBecomesAPointByItsPlaceAndDepth) {
  cv::Mat_<std::uint16_t> depth = cv::Mat_<std::uint16_t>::zeros(2, 4);
  depth(1, 3) = 2000;
  EXPECT_THAT(decodePoints({"", 0, 1.0f, 0.5f, {7}, {1}}, depth),
              testing::ElementsAre(Position3D(2.0f, -0.5f, 0.0f)));
}

TEST(ImagePoints, allPointsAreRestoredOrNone) {
  const auto depth = someDepth();
  auto records = recordsOf(depth);
  const auto sut = encodePoints(records, depth, kExtents);
  ASSERT_TRUE(sut);
  EXPECT_THAT(sut->lengths, testing::ElementsAre(30, 100, 1, 1, 300));
  std::vector<Position3D> all = records[0].points;
  all.insert(all.end(), records[1].points.begin(), records[1].points.end());
  EXPECT_EQ(decodePoints(*sut, depth), all);
  for (const Position3D& point : thinPoints(*sut, depth, 10))
    EXPECT_THAT(all, testing::Contains(point));
  EXPECT_EQ(thinPoints(*sut, depth, 10).size(), 3u);

  EXPECT_FALSE(encodePoints(records, depth, {1.1f, std::nextafter(0.9f, 1.0f)}));
  for (const Position3D& wrong :
       {Position3D(), Position3D(NAN, 0.0f, 0.0f), Position3D(1.0f, 9.0f, 0.0f)}) {
    records[1].points[200] = wrong;
    EXPECT_FALSE(encodePoints(records, depth, kExtents));
  }
  records[1].points.resize(200);
  records[1].points[0].y = std::nextafter(records[1].points[0].y, 9.0f);
  EXPECT_FALSE(encodePoints(records, depth, kExtents));
}

TEST(ImagePoints, runsThatAreNotInTheImageAreRefused) {
  const auto depth = someDepth();
  for (const auto& sut :
       {runsOf({0, 1}, {1}), runsOf({-1}, {1}), runsOf({1199}, {2}), runsOf({0}, {0xFFFFFFFF}),
        runsOf({0, -1200}, {1200, 1}), runsOf({0, 0x7FFFFFFF, 0x7FFFFFFF}, {1, 0, 1})})
    EXPECT_THROW(decodePoints(sut, depth), std::runtime_error);
}

}  // namespace
}  // namespace QV::ros2
