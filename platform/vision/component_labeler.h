#pragma once

#include <cstdint>
#include <vector>

#include <opencv2/core.hpp>

#include "platform/api.h"

namespace QV::vision {

/**
 * Labels the connected components of depth images and keeps its working memory between them: use
 * one for a stream of images. One thread at a time.
 */
class QV_API ComponentLabeler {
 public:
  /**
   * As connectedComponentLabeling, with its errors; returns the number of components. `labels` is
   * reallocated only when its size differs.
   */
  int label(const cv::Mat& image, cv::Mat_<int>& labels, int maxDifference);

 private:
  // Pixels of one row that hang together, from `begin` to before `end`.
  struct Run {
    int begin;
    int end;
    // Of an earlier run that this one hangs together with, or of itself.
    int parent;
    int label;
  };

  // One row of pixels between zeros, and a bit for each: from the lowest, 0 beyond the width.
  struct Row {
    std::vector<std::uint16_t> pixels;
    std::vector<std::uint64_t> valid;
    std::vector<std::uint64_t> starts;
    std::size_t firstRun = 0;
  };

  void xReset(int width);
  void xFindRuns();
  void xJoinToRowAbove();
  void xJoin(std::size_t run, std::size_t runAbove);
  int xRootOf(int run);
  int xNumberComponents();
  void xPaint(cv::Mat_<int>& labels) const;

  std::uint16_t maxDifference = 0;
  Row row;
  Row above;
  std::vector<Run> runs;
  // Of each row and of the row after the last.
  std::vector<std::size_t> firstRuns;
};

}  // namespace QV::vision
