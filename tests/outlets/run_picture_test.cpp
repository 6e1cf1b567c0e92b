#include "outlets/picture/run_picture.h"

#include <gtest/gtest.h>
#include <opencv2/imgcodecs.hpp>

#include "outlets/picture/internal/palette.h"
#include "tests/support/temporary_folder.h"
#include "tests/support/walled_map.h"

namespace QV::outlets {
namespace {

constexpr int kTitleHeight = 52;
constexpr double kPixelsPerMetre = 350.0;

/** A room of 4 by 4 metres, free but for its walls and a corner that is unknown. */
OccupancyMap room() {
  OccupancyMap map = test::makeWalledMap(40, 40, 0.1f);
  for (int i = 1; i < 10; ++i) {
    for (int j = 1; j < 10; ++j) map.setOccupancy(i, j, OccupancyMap::kUnknown);
  }
  return map;
}

Math::MetricalData echo(const std::string& family, std::vector<Math::Position3D> points) {
  return {family, family, {0.1f, 1.0f, 0.6f, 5}, {}, std::move(points), {}};
}

struct RunPictureTest : testing::Test {
  cv::Mat draw(const std::vector<Math::Pose2D>& poses,
               const std::vector<Math::MetricalData>& records) {
    const OccupancyMap map = room();
    const auto path = folder / "picture.png";
    writePicture({map, poses, records, "A room"}, path);
    return cv::imread(path);
  }

  /** The colour at a position in the map, metres. */
  static cv::Scalar at(const cv::Mat& page, double x, double y) {
    const auto column = static_cast<int>(x * kPixelsPerMetre);
    const auto row = kTitleHeight + static_cast<int>((4.0 - y) * kPixelsPerMetre);
    return cv::Scalar(page.at<cv::Vec3b>(row, column));
  }

  test::TemporaryFolder folder;
};

TEST_F(RunPictureTest, showsMapWayRobotAndReadingWhereTheyAre) {
  const std::vector<Math::Pose2D> way = {
      {2.0f, 1.5f, 0.0f}, {2.5f, 1.5f, 0.0f}, {2.5f, 2.5f, 1.5707963f}};
  const cv::Mat page = draw(way, {echo("Sonar", {{0.8f, 0.0f, 0.0f}}),
                                  echo("Asus", {{0.5f, 0.1f, 0.0f}, {0.6f, -0.1f, 0.0f}})});
  const cv::Scalar ink = at(page, 0.05, 2.0);
  EXPECT_EQ(at(page, 3.95, 2.0), ink);
  EXPECT_EQ(at(page, 1.0, 3.0), kPaper);
  EXPECT_EQ(at(page, 0.5, 0.5), kUnknown);
  EXPECT_NE(ink, kPaper);
  EXPECT_EQ(at(page, 2.25, 1.5), kPath);
  EXPECT_EQ(at(page, 2.5, 1.8), kPath);
  EXPECT_EQ(at(page, 2.4, 2.5), kPaper) << "inside the robot";
  // The robot looks up: the one echo is an arc above it, the others stand where they were measured.
  EXPECT_EQ(at(page, 2.5, 3.3), colourOfFamily("Sonar"));
  EXPECT_EQ(at(page, 2.4, 3.0), colourOfFamily("Asus"));
  EXPECT_EQ(at(page, 2.6, 3.1), colourOfFamily("Asus"));
  // Fields of view are tinted, and nothing else is.
  EXPECT_NE(at(page, 2.5, 2.9), kPaper);
  EXPECT_EQ(at(page, 3.2, 2.5), kPaper);
}

}  // namespace
}  // namespace QV::outlets
