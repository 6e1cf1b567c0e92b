#include "outlets/web/internal/map_picture.h"

#include <cmath>

#include <opencv2/core.hpp>

#include "platform/vision/internal/png_image.h"

namespace QV::outlets {
namespace {

constexpr float kSolidAbove = OccupancyMap::kSolidAbove;

uchar greyOf(float occupancy) {
  if (std::abs(occupancy - OccupancyMap::kUnknown) < 0.01f) return 205;
  return occupancy > kSolidAbove ? 0 : 254;
}

}  // namespace

std::string makeMapPicture(const OccupancyMap& map) {
  cv::Mat_<uchar> picture(map.getHeight(), map.getWidth());
  for (int row = 0; row < picture.rows; ++row) {
    for (int column = 0; column < picture.cols; ++column) {
      picture(picture.rows - 1 - row, column) = greyOf(map.getOccupancy(column, row));
    }
  }
  return QV::detail::encodePng(picture);
}

}  // namespace QV::outlets
