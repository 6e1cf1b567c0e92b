#include "robot/maps/internal/map_image.h"

#include <limits>
#include <stdexcept>
#include <string>

#include <opencv2/core.hpp>

#include "platform/vision/internal/png_image.h"
#include "robot/internal/file_bytes.h"
#include "robot/maps/internal/pgm_reader.h"
#include "robot/maps/internal/png_chunks.h"

namespace QV::robot {
namespace {

constexpr char kPngSignature[] = "\x89PNG\r\n\x1a\n";
constexpr std::size_t kMostImageBytes = std::numeric_limits<std::int32_t>::max();

// A small file may hold a picture that fills the memory, so its head is looked at first.
cv::Mat decodePng(const std::string& png) {
  const PngSize size = sizeOfPng(png);
  checkPixels(size.width, size.height);
  if (size.bitsPerSample > 8) throw std::runtime_error("a PNG of 8 bits a channel expected");
  return detail::decodePng(keepCriticalChunks(png));
}

MapImage toMapImage(const cv::Mat& image) {
  const int samples = image.channels();
  const int channels = samples < 3 ? 1 : 3;
  MapImage result{image.cols, image.rows, channels, 255, {}};
  result.pixels.reserve(image.total());
  for (int row = 0; row < image.rows; ++row) {
    const auto* sample = image.ptr<std::uint8_t>(row);
    for (int column = 0; column < image.cols; ++column, sample += samples) {
      const int sum = channels == 1 ? sample[0] : sample[0] + sample[1] + sample[2];
      result.pixels.push_back(static_cast<std::uint16_t>(sum));
    }
  }
  return result;
}

MapImage decode(std::string& bytes) {
  if (bytes.starts_with(kPngSignature)) return toMapImage(decodePng(bytes));
  if (bytes.starts_with("P2") || bytes.starts_with("P5")) return PgmReader(bytes).read();
  throw std::runtime_error("a PGM (P2 or P5) or PNG image expected");
}

}  // namespace

void checkPixels(std::uint64_t width, std::uint64_t height) {
  if (width * height <= kMostPixels) return;
  throw std::runtime_error("a picture of at most " + std::to_string(kMostPixels) +
                           " pixels expected, " + std::to_string(width) + " by " +
                           std::to_string(height) + " given");
}

MapImage readMapImage(const std::filesystem::path& path) {
  std::string bytes = readFile(path, kMostImageBytes);
  try {
    return decode(bytes);
  } catch (const cv::Exception& failure) {
    throw std::runtime_error(path.string() + ": " + failure.err);
  } catch (const std::runtime_error& failure) {
    throw std::runtime_error(path.string() + ": " + failure.what());
  }
}

}  // namespace QV::robot
