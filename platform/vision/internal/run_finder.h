#pragma once

#include <cstdint>
#include <vector>

#include <opencv2/core.hpp>

#include "platform/vision/internal/component_runs.h"

namespace QV::detail {

/** The facts about a row of pixels, one bit for each pixel, from the lowest. */
struct RowBits {
  /** The pixels, between zeros. */
  std::vector<std::uint16_t> pixels;
  std::vector<std::uint64_t> valid;
  /** The pixels beside runs, behind their last; and those which join runs to others above. */
  std::vector<std::uint64_t> ends;
  std::vector<std::uint64_t> links;
  /** The starts of runs, and the number of the first in each word. */
  std::vector<std::uint64_t> starts;
  std::vector<int> firstRuns;
};

/** The working memory of findRuns. */
struct RowPair {
  RowBits row;
  RowBits above;
};

/**
 * Finds the runs of valid pixels that differ from their neighbours by at most `maxDifference`, and
 * which of them hang together; returns the number of components. The image is 16-bit.
 */
int findRuns(const cv::Mat& image, std::uint16_t maxDifference, RowPair& rows,
             vision::ComponentRuns& runs);

/** Writes the labels of the runs, which are those of an image of this size; 0 between them. */
void paintRuns(const vision::ComponentRuns& runs, cv::Mat_<int>& labels);

}  // namespace QV::detail
