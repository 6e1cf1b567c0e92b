#include "robot/maps/internal/png_chunks.h"

#include <cstdint>
#include <stdexcept>
#include <zlib.h>

namespace QV::robot {
namespace {

constexpr std::size_t kSignatureSize = 8;
// Length, type and checksum, four bytes each, around the data.
constexpr std::size_t kFrameSize = 12;
// Where the head has the width; the height follows, then the bits of a sample.
constexpr std::size_t kWidthAt = 16;

std::uint32_t numberAt(const std::string& bytes, std::size_t position) {
  std::uint32_t number = 0;
  for (std::size_t i = position; i < position + sizeof number; ++i) {
    number = number << 8 | static_cast<unsigned char>(bytes[i]);
  }
  return number;
}

void checkSum(const std::string& png, std::size_t start, std::size_t length) {
  const auto* const counted = reinterpret_cast<const Bytef*>(png.data() + start + 4);
  if (crc32_z(0, counted, length + 4) == numberAt(png, start + 8 + length)) return;
  throw std::runtime_error("a whole PNG image expected, the chunk at byte " +
                           std::to_string(start) + " is damaged");
}

[[noreturn]] void failCutShort(const std::string& png) {
  throw std::runtime_error("a whole PNG image expected, this one ends at byte " +
                           std::to_string(png.size()));
}

}  // namespace

PngSize sizeOfPng(const std::string& png) {
  if (png.size() <= kWidthAt + 8) failCutShort(png);
  return {numberAt(png, kWidthAt), numberAt(png, kWidthAt + 4), png[kWidthAt + 8]};
}

std::string keepCriticalChunks(const std::string& png) {
  std::string kept = png.substr(0, kSignatureSize);
  std::size_t start = kSignatureSize;
  while (png.size() >= start + kFrameSize) {
    const std::size_t length = numberAt(png, start);
    if (length > png.size() - start - kFrameSize) break;
    checkSum(png, start, length);
    const std::string type = png.substr(start + 4, 4);
    // An upper-case first letter says that the chunk is critical; tRNS makes palettes transparent.
    if ((type[0] >= 'A' && type[0] <= 'Z') || type == "tRNS") {
      kept.append(png, start, length + kFrameSize);
    }
    if (type == "IEND") return kept;
    start += length + kFrameSize;
  }
  failCutShort(png);
}

}  // namespace QV::robot
