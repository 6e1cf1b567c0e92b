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
/** Depth in millimetres, 16-bit unsigned; 0: no measurement. */
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

/** Returns the size in pixels of a resolution code. Throws std::invalid_argument for an unknown
 * one. */
QV_API void setSizeFromResolution(int resolution, int& width, int& height);

/**
 * An image: rows of pixels from the top, without gaps, in the layout of the colour space, and the
 * time of the image. Copies share the pixels, which never change.
 */
class QV_API QVImage {
 public:
  /**
   * Keeps `pixels` alive; the time is in microseconds of ko::Clock. Throws QVError for sizes
   * outside 1..65535, a time beyond the clock, and a buffer that does not fit width, height and
   * colour space (for an unknown one: a whole number of bytes per pixel).
   */
  QVImage(int width, int height, int colorSpace, std::int64_t timestamp, QVValue::Binary pixels);

  /** Borrows `size` bytes that must outlive the image and its copies. Errors as above. */
  QVImage(int width, int height, int colorSpace, std::int64_t timestamp, const std::uint8_t* pixels,
          std::size_t size);

  /**
   * Returns the image of [width, height, color space, microseconds, pixels], which shares the
   * pixels; null for the invalid value, "no image". Throws QVError for anything else.
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
