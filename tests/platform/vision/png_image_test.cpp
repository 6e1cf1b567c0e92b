#include "platform/vision/internal/png_image.h"

#include <stdexcept>
#include <vector>

#include <opencv2/imgcodecs.hpp>

#include "tests/support/vocabulary.h"

namespace QV::detail {
namespace {

cv::Mat randomImage(int type) {
  cv::Mat image(7, 5, type);
  cv::randu(image, 0, CV_MAT_DEPTH(type) == CV_16U ? 65536 : 256);
  return image;
}

std::string pngOf(const cv::Mat& image) {
  std::vector<uchar> png;
  cv::imencode(".png", image, png);
  return {png.begin(), png.end()};
}

bool isSame(const cv::Mat& a, const cv::Mat& b) {
  return a.size() == b.size() && a.type() == b.type() && cv::norm(a, b, cv::NORM_INF) == 0.0;
}

TEST(PngImage, pngsOfOtherWritersAreReadExactlyExceptAlpha) {
  for (const int type : {CV_8UC1, CV_8UC3, CV_16UC1, CV_16UC3}) {
    const cv::Mat image = randomImage(type);
    EXPECT_TRUE(isSame(decodePng(pngOf(image)), image)) << cv::typeToString(type);
  }
  const cv::Mat transparent = randomImage(CV_8UC4);
  cv::Mat channels[4];
  cv::split(transparent, channels);
  cv::Mat colours;
  cv::merge(channels, 3, colours);
  EXPECT_TRUE(isSame(decodePng(pngOf(transparent)), colours));
}

TEST(PngImage, otherReadersReadOurPngs) {
  for (const int type : {CV_8UC1, CV_8UC3}) {
    const cv::Mat image = randomImage(type);
    const std::string png = encodePng(image);
    const std::vector<uchar> bytes(png.begin(), png.end());
    EXPECT_TRUE(isSame(cv::imdecode(bytes, cv::IMREAD_UNCHANGED), image));
  }
  EXPECT_THROW(encodePng(randomImage(CV_16UC1)), std::invalid_argument);
}

TEST(PngImage, aCutOrDamagedImageIsRefusedWhereverItEnds) {
  const std::string png = pngOf(randomImage(CV_8UC3));
  for (std::size_t size = 0; size < png.size(); ++size)
    EXPECT_THROW(decodePng(std::string_view(png).substr(0, size)), std::runtime_error) << size;
  std::string damaged = png;
  damaged[png.find("IDAT") + 10] ^= 1;
  EXPECT_THROW(decodePng(damaged), std::runtime_error);
}

}  // namespace
}  // namespace QV::detail
