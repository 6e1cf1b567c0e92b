#include <cmath>
#include <cstring>
#include <map>

#include "tests/sensor/perception/sensor_3d_fixture.h"
#include "tests/support/depth_frames.h"
#include "tests/support/flood_fill.h"
#include "tests/support/vector_targets.h"

namespace QV::sensor {
namespace {

using Depth = cv::Mat_<std::uint16_t>;

constexpr int kMaxDifference = 100;
constexpr std::size_t kLowBlobSize = 768;

bool haveSameBits(const Scans& a, const Scans& b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](const auto& x, const auto& y) {
    return x.size() == y.size() && std::memcmp(x.data(), y.data(), x.size() * sizeof(x[0])) == 0;
  });
}

/** Blocks of random sizes, heights and roughness; some reach the edges. */
Depth blocks(cv::Size size, unsigned tallest, unsigned roughest, cv::RNG& random) {
  Depth image(size, std::uint16_t{0});
  for (int i = 0; i < 40; ++i) {
    const cv::Point corner(random(size.width), random(size.height));
    const cv::Size extent(1 + random(size.width), 1 + random(size.height));
    const unsigned height = random(tallest);
    const unsigned roughness = 1 + random(roughest);
    cv::Mat_<std::uint16_t> block = image(cv::Rect(corner, extent) & cv::Rect({}, size));
    for (auto& pixel : block) pixel = static_cast<std::uint16_t>(height + random(roughness));
  }
  return image;
}

/** The frames, and once more each without 56 of 80 columns: 70 % and more have no depth. */
std::vector<test::DepthFrame> withThinned(std::vector<test::DepthFrame> frames) {
  for (std::size_t i = 0, count = frames.size(); i < count; ++i) {
    Depth depth = frames[i].depth.clone();
    for (int u = 24; u + 56 <= depth.cols; u += 80) depth.colRange(u, u + 56) = 0;
    frames.push_back({frames[i].name + " thinned", depth});
  }
  return frames;
}

struct Sensor3DFilteringTest : Sensor3DTest {
  /** The components that the filter is to find, and the lines that it is to log. */
  struct Plain {
    Scans scans;
    std::vector<std::string> lines;
  };

  /** Pixel by pixel, as the definition reads. */
  Plain plainForm(const Depth& image, const cv::Mat_<int>& labels, std::size_t least) const {
    const float xToZ = 2.0f * std::tan(kHorizontal * 0.5f);
    const float yToZ = 2.0f * std::tan(kVertical * 0.5f);
    Plain plain;
    std::map<int, std::size_t> indices;
    for (int v = 0; v < image.rows; ++v) {
      for (int u = 0; u < image.cols; ++u) {
        const float d = image(v, u);
        if (labels(v, u) == 0 || d < 1.0f) continue;
        if (d > 15000.0f) {
          plain.lines.push_back(kError + "xComputeXYZCoordinates: Sensor3D filtering value x : " +
                                std::to_string(image(v, u)));
          continue;
        }
        const float across = float(u) / float(image.cols) - 0.5f;
        const float up = 0.5f - float(v) / float(image.rows);
        const auto [index, isNew] = indices.emplace(labels(v, u), plain.scans.size());
        if (isNew) plain.scans.emplace_back();
        plain.scans[index->second].emplace_back(d * 0.001f, across * d * xToZ * -0.001f,
                                                up * d * yToZ * 0.001f);
      }
    }
    std::erase_if(plain.scans, [&](const auto& points) { return points.size() < least; });
    return plain;
  }

  /** Expects it of the filter on all sets of SIMD instructions. */
  void expectFilters(const Depth& image, std::size_t least, const std::string& what) {
    const Plain expected = plainForm(image, test::floodFill(image, kMaxDifference), least);
    test::forEachVectorTarget([&](const std::string& target) {
      SCOPED_TRACE(what + ", " + target);
      log.clear();
      QVImage borrowed(image.cols, image.rows, 17, 0, image.data, image.total() * 2);
      Scans scans;
      EXPECT_TRUE(sut->xFilterScan(borrowed, scans));
      EXPECT_TRUE(haveSameBits(scans, expected.scans));
      EXPECT_TRUE(log.lines() == expected.lines);
    });
  }

  cv::RNG random{42};
};

TEST_F(Sensor3DFilteringTest, agreesWithTheReferenceImplementationOnRecordedImages) {
  const auto frames = withThinned(test::loadDepthFrames());
  if (frames.empty()) GTEST_SKIP() << "QV_DATA does not name the real data";
  make(kHighResolutionModel);
  sut->subscribe("me");
  EXPECT_THAT(broker->callsTo("QVVideoDevice"),
              testing::Contains("subscribeCamera[\"Sensor3DDepth\", 2, 12, 17, 11]"));
  for (const auto& frame : frames) expectFilters(frame.depth, 3072, frame.name);
}

TEST_F(Sensor3DFilteringTest, agreesWithTheReferenceImplementationOnRandomImages) {
  make();
  for (const int width : {1, 2, 7, 8, 9, 31, 63, 64, 65, 127, 320, 641, 20000}) {
    for (int i = 0; i < 4; ++i) {
      // Some with nothing beyond the limit, one with little that hangs together.
      const Depth image =
          blocks({width, 20000 / width}, i < 2 ? 3000 : 16000, i < 3 ? 150 : 20000, random);
      expectFilters(image, kLowBlobSize, std::to_string(width) + " wide, " + std::to_string(i));
    }
  }
}

TEST_F(Sensor3DFilteringTest, takesLabelsThatDontFollowFromTheDepth) {
  make();
  for (int i = 0; i < 20; ++i) {
    const cv::Size size(1 + random(200), 100);
    const Depth image = blocks(size, 17000, 4000, random);
    const cv::Mat_<int> labels = blocks(size, 6, 2, random);
    const Plain expected = plainForm(image, labels, kLowBlobSize);
    log.clear();
    Scans scans;
    sut->xComputeXYZCoordinates(image, labels, scans);
    EXPECT_TRUE(haveSameBits(scans, expected.scans)) << i;
    EXPECT_THAT(log.lines(), ElementsAreArray(expected.lines)) << i;
  }
}

TEST_F(Sensor3DFilteringTest, smallListsThatTheCallerPassesAreDroppedToo) {
  make();
  fill({0, 0, 320, 100}, 1000);
  Scans scans = {Scans::value_type(767), Scans::value_type(768)};
  sut->xComputeXYZCoordinates(depth, test::floodFill(depth, kMaxDifference), scans);
  ASSERT_THAT(scans, SizeIs(2));
  EXPECT_THAT(scans[0], SizeIs(768));
  EXPECT_THAT(scans[1], SizeIs(32000));
}

}  // namespace
}  // namespace QV::sensor
