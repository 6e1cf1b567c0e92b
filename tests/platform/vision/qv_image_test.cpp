#include "platform/vision/qv_image.h"

#include <tuple>

#include "tests/support/vocabulary.h"

namespace QV {
namespace {

QVValue imageValue(int width, int height, int colorSpace, std::size_t bytes) {
  return QVValue::array(width, height, colorSpace, 1234, QVValue::Bytes(bytes, 7));
}

TEST(VideoCodes, areBytesAndChannelsOfAPixelAndSizesOfAnImage) {
  const std::tuple<int, int, int> layouts[] = {{kRGBColorSpace, 3, 3},
                                               {kDepthColorSpace, 2, 1},
                                               {kXYZColorSpace, 12, 3},
                                               {kPacked24ColorSpace, 3, 1},
                                               {99, -1, -1}};
  for (const auto& [colorSpace, layers, channels] : layouts) {
    EXPECT_EQ(getNumLayersInColorSpace(colorSpace), layers) << colorSpace;
    EXPECT_EQ(getNumChannelsInColorSpace(colorSpace), channels) << colorSpace;
  }
  int width = 0;
  int height = 0;
  setSizeFromResolution(k320x240Resolution, width, height);
  EXPECT_EQ(std::pair(width, height), std::pair(320, 240));
  setSizeFromResolution(k640x480Resolution, width, height);
  EXPECT_EQ(std::pair(width, height), std::pair(640, 480));
  EXPECT_THAT(errorOf([&] { setSizeFromResolution(9, width, height); }), HasSubstr("code 9"));
}

TEST(QVImage, sharesItsPixelsWithTheValueThatCarriesIt) {
  const auto pixels =
      std::make_shared<const QVValue::Bytes>(QVValue::Bytes{1, 2, 3, 4, 5, 6, 7, 8});
  const QVValue value = QVImage(2, 2, 17, -5, pixels).toQVValue();
  const auto read = QVImage::fromQVValue(value);
  ASSERT_TRUE(read);
  EXPECT_EQ(read->getPixels(), pixels->data());
  EXPECT_EQ(read->getSize(), 8u);
  EXPECT_EQ(std::pair(read->getWidth(), read->getHeight()), std::pair(2, 2));
  EXPECT_EQ(read->getColorSpace(), 17);
  EXPECT_EQ(read->getTimestamp(), -5);
  EXPECT_EQ(read->toQVValue(), value);
}

TEST(QVImage, copiesBorrowedPixelsIntoAValue) {
  std::uint8_t pixels[] = {1, 2, 3};
  const QVImage sut(1, 1, 11, 0, pixels, sizeof pixels);
  EXPECT_EQ(sut.getPixels(), pixels);
  const QVValue value = sut.toQVValue();
  pixels[0] = 99;
  EXPECT_EQ(*value[4].toBinary(), (QVValue::Bytes{1, 2, 3}));
}

TEST(QVImage, takesAnUnknownColorSpaceWithAnyWholeNumberOfBytesAPixel) {
  EXPECT_EQ(QVImage::fromQVValue(imageValue(3, 2, 99, 30))->getColorSpace(), 99);
}

TEST(QVImage, refusesAMalformedValue) {
  const QVValue pixels = QVValue::Bytes(8);
  for (const QVValue& value :
       {QVValue(3), QVValue("image"), QVValue::array(2, 2, 17, 0),
        QVValue::array(2, 2, 17, 0, pixels, 0), QVValue::array(2.0, 2, 17, 0, pixels),
        QVValue::array(2, 2, 17, true, pixels), QVValue::array(2, 2, 17, 0, "12345678")}) {
    EXPECT_EQ(
        errorOf([&] { QVImage::fromQVValue(value); }),
        "QVImage::fromQVValue: [width, height, color space, microseconds, pixels] expected, " +
            value.toText() + " given");
  }
}

TEST(QVImage, refusesABufferThatDoesNotMatchItsSize) {
  constexpr std::int64_t kLong = std::int64_t{1} << 40;
  const std::pair<QVValue, const char*> cases[] = {
      {imageValue(320, 240, 17, 153598),
       "153600 bytes for 320 by 240 pixels of color space 17 expected, 153598 given"},
      {imageValue(2, 2, 19, 50), "48 bytes for 2 by 2 pixels of color space 19 expected, 50 given"},
      {imageValue(2, 2, 99, 0),
       "a multiple of 4 bytes for 2 by 2 pixels of color space 99 expected, 0 given"},
      {imageValue(65535, 65535, 19, 0),
       "51538034700 bytes for 65535 by 65535 pixels of color space 19 expected, 0 given"},
      {imageValue(0, 240, 17, 0), "a size from 1 by 1 to 65535 by 65535 expected, 0 by 240 given"},
      {imageValue(-2, -2, 17, 8), "a size from 1 by 1 to 65535 by 65535 expected, -2 by -2 given"},
      {QVValue::array(kLong, 1, 17, 0, QVValue::Bytes(2)),
       "a size from 1 by 1 to 65535 by 65535 expected, 2147483647 by 1 given"},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(errorOf([&] { QVImage::fromQVValue(c.first); }),
              std::string("QVImage::QVImage: ") + c.second);
  }
}

TEST(QVImage, refusesATimeBeyondTheClock) {
  const auto errorAt = [](std::int64_t timestamp) {
    return errorOf([&] { QVImage(1, 1, 17, timestamp, QVValue(QVValue::Bytes(2)).toBinary()); });
  };
  constexpr std::int64_t kLatest = 9'223'372'036'854'775 - 3'600'000'000;
  EXPECT_EQ(errorAt(kLatest), "");
  EXPECT_THAT(errorAt(kLatest + 1), HasSubstr("expected"));
  EXPECT_EQ(errorAt(-9'300'000'000'000'000),
            "QVImage::QVImage: a time in microseconds expected, -9300000000000000 given");
  EXPECT_EQ(errorAt(std::numeric_limits<std::int64_t>::max()),
            "QVImage::QVImage: a time in microseconds expected, 9223372036854775807 given");
}

}  // namespace
}  // namespace QV
