#pragma once

#include <cstdint>
#include <memory>

#include "platform/api.h"
#include "platform/middleware/qv_value.h"

namespace QV {

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

  /** As fromQVValue reads it; shares the pixels unless they are borrowed. */
  QVValue toQVValue() const;

  int getWidth() const { return width; }
  int getHeight() const { return height; }
  int getColorSpace() const { return colorSpace; }
  /** Microseconds of ko::Clock. */
  std::int64_t getTimestamp() const { return timestamp; }

  const std::uint8_t* getPixels() const { return pixels; }
  /** Of the pixels, in bytes. */
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
