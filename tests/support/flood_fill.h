#pragma once

#include <cstdlib>
#include <queue>

#include <opencv2/core.hpp>

namespace QV::test {

/** Labels the component of `seed`, which has depth and no label yet. */
inline void flood(const cv::Mat_<std::uint16_t>& depth, int maxDifference, cv::Point seed,
                  int label, cv::Mat_<int>& labels) {
  labels(seed) = label;
  std::queue<cv::Point> border({seed});
  for (; !border.empty(); border.pop()) {
    const cv::Point at = border.front();
    for (const cv::Point step : {cv::Point(1, 0), {-1, 0}, {0, 1}, {0, -1}}) {
      const cv::Point next = at + step;
      if (!cv::Rect({}, depth.size()).contains(next)) continue;
      if (depth(next) == 0 || labels(next) != 0) continue;
      if (std::abs(depth(next) - depth(at)) > maxDifference) continue;
      labels(next) = label;
      border.push(next);
    }
  }
}

/** The slow and obvious way to label: each pixel without a label floods its component. */
inline cv::Mat_<int> floodFill(const cv::Mat_<std::uint16_t>& depth, int maxDifference) {
  cv::Mat_<int> labels(depth.size(), 0);
  int count = 0;
  for (int y = 0; y < depth.rows; ++y) {
    for (int x = 0; x < depth.cols; ++x) {
      if (depth(y, x) != 0 && labels(y, x) == 0)
        flood(depth, maxDifference, {x, y}, ++count, labels);
    }
  }
  return labels;
}

}  // namespace QV::test
