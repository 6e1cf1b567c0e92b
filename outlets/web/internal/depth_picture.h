#pragma once

#include <cstdint>
#include <string>

#include <opencv2/core.hpp>

#include "platform/vision/internal/component_labeler.h"

namespace QV::outlets {

/** A depth frame as people look at it. */
struct DepthPicture {
  /** Returns a PNG: near is bright, no depth is black, components are coloured. */
  std::string png;
  int width = 0;
  int height = 0;
  /** The number of components of at least 1 % of the pixels. */
  int components = 0;
  /** Pixels farther than a depth camera's sensor takes. */
  int beyond = 0;
};

/** Draws depth frames, in millimetres, with the components that the depth camera's sensor finds. */
class DepthPainter {
 public:
  DepthPicture paint(const cv::Mat_<std::uint16_t>& depth);

 private:
  vision::ComponentLabeler labeler;
  cv::Mat_<int> labels;
};

}  // namespace QV::outlets
