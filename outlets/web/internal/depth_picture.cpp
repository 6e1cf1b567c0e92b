#include "outlets/web/internal/depth_picture.h"

#include <vector>

#include "platform/vision/internal/png_image.h"
#include "platform/vision/qv_image.h"

namespace QV::outlets {
namespace {

// The limits of Sensor3D: millimetres, and the share of the image.
constexpr int kMaxDifference = 100;
constexpr int kSmallestShare = 100;
// Blue, green, red.
const cv::Vec3b kTints[] = {{178, 114, 0},  {0, 159, 230}, {115, 158, 0}, {167, 121, 204},
                            {233, 180, 86}, {0, 94, 213},  {66, 228, 240}};

std::vector<int> countPixels(const cv::Mat_<int>& labels, int labelCount) {
  std::vector<int> counts(static_cast<std::size_t>(labelCount) + 1);
  for (const int label : labels) ++counts[static_cast<std::size_t>(label)];
  return counts;
}

/** Returns for each label the number of the component that it is, counted from 0; -1 for none. */
std::vector<int> numberComponents(const std::vector<int>& counts, int smallest, int& components) {
  std::vector<int> numbers(counts.size(), -1);
  for (std::size_t label = 1; label < counts.size(); ++label) {
    if (counts[label] >= smallest) numbers[label] = components++;
  }
  return numbers;
}

cv::Mat_<uchar> brightnessOf(const cv::Mat_<std::uint16_t>& depth) {
  double nearest = 0.0;
  cv::minMaxLoc(depth, &nearest, nullptr, nullptr, nullptr, depth != 0);
  cv::Mat_<uchar> grey;
  cv::divide(255.0 * nearest, depth, grey, CV_8U);  // What is divided by 0 becomes 0.
  return grey;
}

cv::Vec3b tinted(uchar grey, int component) {
  if (component < 0) return {grey, grey, grey};
  const cv::Vec3b& tint = kTints[static_cast<std::size_t>(component) % std::size(kTints)];
  const auto mix = [grey](uchar colour) {
    return static_cast<uchar>((colour * (64 + grey) + 64 * grey) / 384);
  };
  return {mix(tint[0]), mix(tint[1]), mix(tint[2])};
}

}  // namespace

DepthPicture DepthPainter::paint(const cv::Mat_<std::uint16_t>& depth) {
  cv::Mat_<std::uint16_t> seen = depth.clone();
  DepthPicture picture{{}, depth.cols, depth.rows, 0, cv::countNonZero(depth > kMaxDepth)};
  seen.setTo(0, depth > kMaxDepth);
  const auto counts = countPixels(labels, labeler.label(seen, labels, kMaxDifference));
  const int smallest = depth.cols * depth.rows / kSmallestShare;
  const auto numbers = numberComponents(counts, smallest, picture.components);
  const cv::Mat_<uchar> grey = brightnessOf(seen);
  cv::Mat_<cv::Vec3b> colours(depth.size());
  for (cv::Point at; at.y < depth.rows; ++at.y) {
    for (at.x = 0; at.x < depth.cols; ++at.x) {
      colours(at) = tinted(grey(at), numbers[static_cast<std::size_t>(labels(at))]);
    }
  }
  picture.png = QV::detail::encodePng(colours);
  return picture;
}

}  // namespace QV::outlets
