#pragma once

#include <cstdint>
#include <vector>

#include <opencv2/core.hpp>

#include "platform/vision/internal/component_runs.h"

namespace QV::detail {

/** What is known of a row of pixels; of bits there is one for each pixel, from the lowest. */
struct RowBits {
  /** Between zeros. */
  std::vector<std::uint16_t> pixels;
  std::vector<std::uint64_t> valid;
  /** Where runs begin, and in each word the number of the first. */
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
