#pragma once

#include <cstdint>
#include <memory>

#include "platform/api.h"
#include "platform/middleware/qv_value.h"

namespace QV {

// The numbers by which the video device names cameras, colour spaces and resolutions.

/** Index of the depth camera. */
constexpr int kDepthCamera = 2;

/** Red, green and blue, a byte each. */
constexpr int kRGBColorSpace = 11;
/** Depth in millimetres as 16-bit unsigned; 0 where nothing was measured. */
constexpr int kDepthColorSpace = 17;
/** The last depth, in millimetres, that is taken for a measurement. */
constexpr int kMaxDepth = 15000;
/** Three 32-bit floats: x, y, z. */
constexpr int kXYZColorSpace = 19;
/** 24 bits packed into one channel. */
constexpr int kPacked24ColorSpace = 24;

constexpr int k320x240Resolution = 8;
constexpr int k640x480Resolution = 12;

/** Bytes per pixel; -1 for a colour space that is not listed above. */
QV_API int getNumLayersInColorSpace(int colorSpace);

/** Channels per pixel; -1 for a colour space that is not listed above. */
QV_API int getNumChannelsInColorSpace(int colorSpace);

/** The size in pixels behind a resolution code; an unknown one throws std::invalid_argument. */
QV_API void setSizeFromResolution(int resolution, int& width, int& height);

/**
 * A picture: rows of pixels from the top, without gaps, laid out as the colour space says, and the
 * time it was taken. Copies share the pixels, which nobody changes.
 */
class QV_API QVImage {
 public:
  /**
   * Keeps `pixels` alive; the time in microseconds of ko::Clock. Sizes outside 1..65535, a time
   * that is no clock's, and a buffer of another size than width, height and colour space ask for
   * (or, for an unknown one, that is no whole number of bytes a pixel): QVError.
   */
  QVImage(int width, int height, int colorSpace, std::int64_t timestamp, QVValue::Binary pixels);

  /** Borrows `size` bytes that must outlive the image and its copies. Errors as above. */
  QVImage(int width, int height, int colorSpace, std::int64_t timestamp, const std::uint8_t* pixels,
          std::size_t size);

  /**
   * The image in [width, height, color space, microseconds, pixels], sharing the pixels; null for
   * the invalid value, which stands for no image. Anything else: QVError.
   */
  static std::unique_ptr<QVImage> fromQVValue(const QVValue& value);

  /** Converts to the value that fromQVValue reads; shares the pixels unless they are borrowed. */
  QVValue toQVValue() const;

  int getWidth() const { return width; }
  int getHeight() const { return height; }
  int getColorSpace() const { return colorSpace; }
  /** Microseconds of ko::Clock. */
  std::int64_t getTimestamp() const { return timestamp; }

  const std::uint8_t* getPixels() const { return pixels; }
  /** The size of the pixels in bytes. */
  std::size_t getSize() const { return size; }

 private:
  void xCheck() const;

  int width;
  int height;
  int colorSpace;
  std::int64_t timestamp;
  /** Null for borrowed pixels. */
  QVValue::Binary owned;
  const std::uint8_t* pixels;
  std::size_t size;
};

}  // namespace QV
