#include "outlets/picture/session_picture.h"

#include <filesystem>

#include <boost/make_shared.hpp>
#include <opencv2/imgcodecs.hpp>

#include "outlets/picture/internal/palette.h"
#include "tests/outlets/told_cases.h"
#include "tests/support/temporary_folder.h"
#include "tests/support/vocabulary.h"
#include "tests/support/walled_map.h"

namespace QV::outlets {
namespace {

constexpr int kTitleHeight = 52;
constexpr double kPixelsPerMetre = 350.0;
// No table knows it: a stranger's sensors are drawn like any other.
constexpr char kFamily[] = "Cliff";

/** A room of 4 by 4 metres, free but for its walls and a corner that is unknown. */
boost::shared_ptr<OccupancyMap> room() {
  const auto map = boost::make_shared<OccupancyMap>(test::makeWalledMap(40, 40, 0.1f));
  for (int i = 1; i < 10; ++i) {
    for (int j = 1; j < 10; ++j) map->setOccupancy(i, j, OccupancyMap::kUnknown);
  }
  return map;
}

struct SessionPictureTest : testing::Test {
  cv::Mat draw(session::Snapshot snapshot, const std::vector<Math::Pose2D>& way) {
    const auto path = folder / "picture.png";
    if (!snapshot.map) snapshot.map = room();
    SessionPicture sut(path);
    for (const auto& pose : way) {
      snapshot.pose = pose;
      sut.show(snapshot);
    }
    sut.finish();
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

TEST_F(SessionPictureTest, showsMapPathAndRobotAtTheirPlaces) {
  session::Snapshot snapshot;
  snapshot.title = "A room";
  const cv::Mat page =
      draw(snapshot, {{2.0f, 1.5f, 0.0f}, {2.5f, 1.5f, 0.0f}, {2.5f, 2.5f, 1.5707963f}});
  const cv::Scalar ink = at(page, 0.05, 2.0);
  EXPECT_EQ(at(page, 3.95, 2.0), ink);
  EXPECT_EQ(at(page, 1.0, 3.0), kPaper);
  EXPECT_EQ(at(page, 0.5, 0.5), kUnknown);
  EXPECT_NE(ink, kPaper);
  EXPECT_EQ(at(page, 2.25, 1.5), kPath);
  EXPECT_EQ(at(page, 2.5, 1.8), kPath);
  EXPECT_EQ(at(page, 2.4, 2.5), kPaper) << "inside the robot";
}

TEST_F(SessionPictureTest, aMapMayHaveMoreColumnsThanAnImageOfOpenCv) {
  session::Snapshot snapshot;
  snapshot.map = boost::make_shared<OccupancyMap>(test::makeWalledMap(40'000, 12, 0.1f));
  const cv::Mat page = draw(snapshot, {{3'500.0f, 0.6f, 0.0f}});
  // Level with the robot, and to the left of it.
  EXPECT_EQ(cv::Scalar(page.at<cv::Vec3b>(kTitleHeight + page.cols / 2, 50)), kPaper);
}

TEST_F(SessionPictureTest, drawsPointsByTheirMeaning) {
  const cv::Scalar paint = paintOf(kFamily);
  const cv::Scalar tint = paint * 0.13 + kPaper * 0.87;
  for (const auto& told : test::toldCases()) {
    const auto snapshot = test::snapshotOf(told, kFamily);
    const cv::Mat page = draw(snapshot, {snapshot.pose});
    for (const auto& mark : told.marks) EXPECT_EQ(at(page, mark.x, mark.y), paint) << told.name;
    for (const auto& bare : told.bare) {
      EXPECT_GT(cv::norm(at(page, bare.x, bare.y) - paint), 100.0) << told.name;
    }
    const bool isFilled = told.name == std::string("ZoneWithMotion");
    const bool isFan = told.meaning != Model::PointMeaning::touch;
    const double away = cv::norm(at(page, 1.6, 2.05) - (isFan ? tint : kPaper));
    EXPECT_EQ(away > 3.0, isFilled) << told.name << ": the field of view is off by " << away;
  }
}

TEST_F(SessionPictureTest, aRobotWithoutAMapIsDrawnOnItsPath) {
  const auto path = folder / "picture.png";
  SessionPicture sut(path);
  sut.finish();
  EXPECT_FALSE(std::filesystem::exists(path)) << "nothing was shown";
  sut.show(test::snapshotOf(test::toldCases()[0], kFamily));
  sut.finish();
  EXPECT_FALSE(cv::imread(path).empty());
  EXPECT_EQ(errorOf([] { SessionPicture("run.jpg"); }),
            "run.jpg: a path that ends in .png expected");
}

}  // namespace
}  // namespace QV::outlets
