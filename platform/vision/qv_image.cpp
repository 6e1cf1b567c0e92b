#include "platform/vision/qv_image.h"

#include <algorithm>
#include <limits>
#include <string>
#include <utility>

#include "platform/middleware/qv_error.h"

namespace QV {
namespace {

constexpr int kMaxSide = 65535;
// The limit in nanoseconds fits a time point, with an hour to spare.
constexpr std::int64_t kMaxTimestamp =
    std::numeric_limits<std::int64_t>::max() / 1000 - std::int64_t{3'600'000'000};

bool isImage(const QVValue& value) {
  return value.isArray() && value.getSize() == 5 &&
         std::all_of(value.toArray().begin(), value.toArray().begin() + 4,
                     [](const QVValue& element) { return element.isInt(); }) &&
         value[4].isBinary();
}

[[noreturn]] void refuse(const std::string& expected, const std::string& given) {
  throw QVError("QVImage", "QVImage", expected + " expected, " + given + " given");
}

}  // namespace

QVImage::QVImage(int width, int height, int colorSpace, std::int64_t timestamp,
                 QVValue::Binary pixels)
    : width(width),
      height(height),
      colorSpace(colorSpace),
      timestamp(timestamp),
      owned(std::move(pixels)),
      pixels(owned ? owned->data() : nullptr),
      size(owned ? owned->size() : 0) {
  xCheck();
}

QVImage::QVImage(int width, int height, int colorSpace, std::int64_t timestamp,
                 const std::uint8_t* pixels, std::size_t size)
    : width(width),
      height(height),
      colorSpace(colorSpace),
      timestamp(timestamp),
      pixels(pixels),
      size(size) {
  xCheck();
}

void QVImage::xCheck() const {
  const std::string sides = std::to_string(width) + " by " + std::to_string(height);
  if (std::min(width, height) < 1 || std::max(width, height) > kMaxSide) {
    refuse("a size from 1 by 1 to 65535 by 65535", sides);
  }
  if (timestamp > kMaxTimestamp || timestamp < -kMaxTimestamp) {
    refuse("a time in microseconds", std::to_string(timestamp));
  }
  const std::size_t area = static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
  const int layers = getNumLayersInColorSpace(colorSpace);
  const bool fits =
      layers < 0 ? size > 0 && size % area == 0 : size == area * static_cast<std::size_t>(layers);
  if (fits) return;
  const std::string needed = layers < 0 ? "a multiple of " + std::to_string(area)
                                        : std::to_string(area * static_cast<std::size_t>(layers));
  refuse(needed + " bytes for " + sides + " pixels of color space " + std::to_string(colorSpace),
         std::to_string(size));
}

std::unique_ptr<QVImage> QVImage::fromQVValue(const QVValue& value) {
  if (!value.isValid()) return nullptr;
  if (!isImage(value)) {
    throw QVError("QVImage", "fromQVValue",
                  "[width, height, color space, microseconds, pixels] expected, " + value.toText() +
                      " given");
  }
  return std::make_unique<QVImage>(value[0].toInt32(), value[1].toInt32(), value[2].toInt32(),
                                   value[3].toInt(), value[4].toBinary());
}

QVValue QVImage::toQVValue() const {
  const auto shared = owned ? owned : std::make_shared<const QVValue::Bytes>(pixels, pixels + size);
  return QVValue::array(width, height, colorSpace, timestamp, shared);
}

}  // namespace QV
