#pragma once

#include <cstdint>
#include <vector>

#include <opencv2/core.hpp>

#include "platform/api.h"
#include "platform/vision/internal/run_finder.h"

namespace QV::vision {

/**
 * Labels the connected components of depth images and keeps its working memory between them: use
 * one for a stream of images. One thread at a time.
 */
class QV_API ComponentLabeler {
 public:
  /**
   * Finds the runs of the components, numbered as connectedComponentLabeling does, with its errors.
   * They last until the next call.
   */
  const ComponentRuns& findRuns(const cv::Mat& image, int maxDifference);

  /**
   * Labels as connectedComponentLabeling does; returns the number of components. `labels` is
   * reallocated only when its size differs.
   */
  int label(const cv::Mat& image, cv::Mat_<int>& labels, int maxDifference);

 private:
  detail::RowPair rows;
  ComponentRuns runs;
  int count = 0;
};

}  // namespace QV::vision
