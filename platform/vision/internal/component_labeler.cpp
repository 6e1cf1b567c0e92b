#include "platform/vision/internal/component_labeler.h"

#include <algorithm>
#include <stdexcept>
#include <string>

namespace QV::vision {

const ComponentRuns& ComponentLabeler::findRuns(const cv::Mat& image, int maxDifference) {
  if (image.dims > 2 || image.type() != CV_16UC1) {
    throw std::invalid_argument("connectedComponentLabeling: an image of one 16-bit channel " +
                                ("expected, " + cv::typeToString(image.type())) + " given");
  }
  if (maxDifference < 0) {
    throw std::invalid_argument(
        "connectedComponentLabeling: a difference of at least 0 expected, " +
        std::to_string(maxDifference) + " given");
  }
  const auto limit = static_cast<std::uint16_t>(std::min(maxDifference, 0xffff));
  count = detail::findRuns(image, limit, rows, runs);
  return runs;
}

int ComponentLabeler::label(const cv::Mat& image, cv::Mat_<int>& labels, int maxDifference) {
  findRuns(image, maxDifference);
  labels.create(image.size());
  detail::paintRuns(runs, labels);
  return count;
}

}  // namespace QV::vision
