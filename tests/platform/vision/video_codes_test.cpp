#include "platform/vision/video_codes.h"

#include <gtest/gtest.h>

namespace QV {
namespace {

TEST(VideoCodes, aColorSpaceSaysHowItsPixelsLie) {
  struct Case {
    int colorSpace;
    int layers;
    int channels;
  };
  for (const auto& [colorSpace, layers, channels] :
       {Case{17, 2, 1}, {19, 12, 3}, {11, 3, 3}, {24, 3, 1}, {0, -1, -1}, {-17, -1, -1}}) {
    EXPECT_EQ(getNumLayersInColorSpace(colorSpace), layers) << colorSpace;
    EXPECT_EQ(getNumChannelsInColorSpace(colorSpace), channels) << colorSpace;
  }
}

}  // namespace
}  // namespace QV
