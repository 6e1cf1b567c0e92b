#include "platform/vision/video_codes.h"

#include <gtest/gtest.h>

#include "tests/support/throws.h"

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

TEST(VideoCodes, aResolutionStandsForASize) {
  int width = 0;
  int height = 0;
  setSizeFromResolution(8, width, height);
  EXPECT_EQ(std::pair(width, height), std::pair(320, 240));
  setSizeFromResolution(12, width, height);
  EXPECT_EQ(std::pair(width, height), std::pair(640, 480));
  EXPECT_EQ(test::errorOf([&] { setSizeFromResolution(9, width, height); }),
            "setSizeFromResolution: unknown resolution code 9, 8 or 12 expected");
  EXPECT_EQ(std::pair(width, height), std::pair(640, 480));
}

}  // namespace
}  // namespace QV
