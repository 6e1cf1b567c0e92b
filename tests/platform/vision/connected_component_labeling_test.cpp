#include "platform/vision/internal/connected_component_labeling.h"

#include <limits>

#include <gmock/gmock.h>
#include <rapidcheck/gtest.h>

#include "platform/vision/internal/component_labeler.h"
#include "tests/support/depth_frames.h"
#include "tests/support/flood_fill.h"
#include "tests/support/vector_targets.h"
#include "tests/support/vocabulary.h"

namespace QV::vision {
namespace {

using Depth = cv::Mat_<std::uint16_t>;

constexpr int kMaxDifference = 100;

cv::Mat_<int> labelsOf(const cv::Mat& image, int maxDifference = kMaxDifference) {
  cv::Mat_<int> labels;
  connectedComponentLabeling(image, labels, maxDifference, 0, 0);
  return labels;
}

constexpr int kMostDifference = std::numeric_limits<int>::max();

bool equal(const cv::Mat_<int>& a, const cv::Mat_<int>& b) {
  return a.size() == b.size() && cv::norm(a, b, cv::NORM_INF) == 0.0;
}

TEST(ConnectedComponentLabeling, joinsNeighboursWhoseDepthsAreNear) {
  struct Case {
    const char* what;
    Depth depth;
    cv::Mat_<int> expected;
  };
  const Case cases[] = {
      {"the limit itself is near", (Depth(1, 3) << 100, 200, 301),
       (cv::Mat_<int>(1, 3) << 1, 1, 2)},
      {"downwards as well", (Depth(3, 1) << 301, 200, 100), (cv::Mat_<int>(3, 1) << 1, 2, 2)},
      {"a slope is one component", (Depth(1, 4) << 100, 200, 300, 400),
       (cv::Mat_<int>(1, 4) << 1, 1, 1, 1)},
      {"a corner does not join", (Depth(2, 2) << 500, 0, 0, 500),
       (cv::Mat_<int>(2, 2) << 1, 0, 0, 2)},
      {"an invalid pixel is near to nothing", (Depth(2, 3) << 50, 0, 50, 50, 0, 50),
       (cv::Mat_<int>(2, 3) << 1, 0, 2, 1, 0, 2)},
      {"arms that meet below count from the first",
       (Depth(3, 5) << 9, 0, 9, 0, 999, 9, 0, 9, 0, 999, 9, 9, 9, 0, 999),
       (cv::Mat_<int>(3, 5) << 1, 0, 1, 0, 2, 1, 0, 1, 0, 2, 1, 1, 1, 0, 2)},
      {"the ends of the range", (Depth(1, 4) << 1, 101, 65535, 65435),
       (cv::Mat_<int>(1, 4) << 1, 1, 2, 2)},
  };
  for (const Case& c : cases) EXPECT_TRUE(equal(labelsOf(c.depth), c.expected)) << c.what;
  EXPECT_EQ(cv::countNonZero(labelsOf(Depth(70, 129, std::uint16_t{0}))), 0);
  EXPECT_TRUE(labelsOf(Depth(0, 5)).empty());
}

RC_GTEST_PROP(ConnectedComponentLabeling, agreesWithFloodingOnRandomImages, ()) {
  // Widths about the words that are compared at once; depths from smooth to noise.
  const int rows = *rc::gen::element(1, 2, 3, 12, 90);
  const int columns = *rc::gen::element(1, 2, 15, 16, 17, 63, 64, 65, 127, 128, 130, 200);
  const auto spread = *rc::gen::element<unsigned>(2, 4, 250, 65536);
  cv::RNG random(*rc::gen::arbitrary<std::uint64_t>());
  Depth depth(rows, columns);
  for (auto& pixel : depth) pixel = static_cast<std::uint16_t>(random(spread));
  const int maxDifference = *rc::gen::element(0, 1, 100, 40000, kMostDifference);
  const auto expected = test::floodFill(depth, maxDifference);
  test::forEachVectorTarget([&](const std::string& target) {
    if (!equal(labelsOf(depth, maxDifference), expected)) RC_FAIL(target);
  });
}

TEST(ConnectedComponentLabeling, agreesWithFloodingOnRecordedFrames) {
  const auto frames = test::loadDepthFrames();
  if (frames.empty()) GTEST_SKIP() << "QV_DATA names no data";
  // The same labeler takes all images: nothing of one may be left in the next.
  ComponentLabeler sut;
  cv::Mat_<int> labels;
  for (const auto& frame : frames) {
    const auto expected = test::floodFill(frame.depth, kMaxDifference);
    double count = 0.0;
    cv::minMaxLoc(expected, nullptr, &count);
    test::forEachVectorTarget([&](const char* target) {
      EXPECT_EQ(sut.label(frame.depth, labels, kMaxDifference), static_cast<int>(count))
          << frame.name;
      EXPECT_TRUE(equal(labels, expected)) << frame.name << " " << target;
    });
  }
}

TEST(ConnectedComponentLabeling, readsAWindowOfAnImage) {
  const Depth depth = (Depth(3, 4) << 5, 5, 5, 5, 5, 900, 0, 5, 5, 900, 900, 5);
  const cv::Mat window = depth(cv::Rect(1, 1, 2, 2));
  EXPECT_TRUE(equal(labelsOf(window), (cv::Mat_<int>(2, 2) << 1, 0, 1, 1)));
}

TEST(ConnectedComponentLabeling, refusesImagesThatItCantLabel) {
  const auto errorFor = [](const cv::Mat& image, int limit, int reserved1, int reserved2) {
    return errorOf([&] {
      cv::Mat_<int> labels;
      connectedComponentLabeling(image, labels, limit, reserved1, reserved2);
    });
  };
  const std::string prefix = "connectedComponentLabeling: ";
  EXPECT_EQ(errorFor(cv::Mat(2, 2, CV_8UC3), 1, 0, 0),
            prefix + "an image of one 16-bit channel expected, CV_8UC3 given");
  EXPECT_EQ(errorFor(cv::Mat(), 1, 0, 0),
            prefix + "an image of one 16-bit channel expected, CV_8UC1 given");
  EXPECT_EQ(errorFor(Depth(2, 2), -1, 0, 0),
            prefix + "a difference of at least 0 expected, -1 given");
  EXPECT_EQ(errorFor(Depth(2, 2), 1, 2, 0),
            prefix + "the reserved numbers must be 0, 2 and 0 given");
  EXPECT_EQ(errorFor(Depth(2, 2), 1, 0, 3),
            prefix + "the reserved numbers must be 0, 0 and 3 given");
}

}  // namespace
}  // namespace QV::vision
