#include <stdexcept>
#include <string>

#include "platform/vision/qv_image.h"

namespace QV {
namespace {

struct PixelLayout {
  int layers;
  int channels;
};

PixelLayout layoutOf(int colorSpace) {
  switch (colorSpace) {
    case kRGBColorSpace:
      return {3, 3};
    case kDepthColorSpace:
      return {2, 1};
    case kXYZColorSpace:
      return {12, 3};
    case kPacked24ColorSpace:
      return {3, 1};
    default:
      return {-1, -1};
  }
}

}  // namespace

int getNumLayersInColorSpace(int colorSpace) {
  return layoutOf(colorSpace).layers;
}

int getNumChannelsInColorSpace(int colorSpace) {
  return layoutOf(colorSpace).channels;
}

void setSizeFromResolution(int resolution, int& width, int& height) {
  switch (resolution) {
    case k320x240Resolution:
      width = 320;
      height = 240;
      return;
    case k640x480Resolution:
      width = 640;
      height = 480;
      return;
    default:
      throw std::invalid_argument("setSizeFromResolution: unknown resolution code " +
                                  std::to_string(resolution) + ", 8 or 12 expected");
  }
}

}  // namespace QV
