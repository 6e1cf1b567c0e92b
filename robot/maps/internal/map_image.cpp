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

cv::Mat decodePng(const std::string& png) {
  cv::Mat image = detail::decodePng(keepCriticalChunks(png));
  if (image.depth() != CV_8U) throw std::runtime_error("a PNG of 8 bits a channel expected");
  return image;
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
