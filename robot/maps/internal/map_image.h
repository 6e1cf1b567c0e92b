#pragma once

#include <cstdint>
#include <filesystem>
#include <vector>

namespace QV::robot {

/** A picture's brightness, row by row from the top; each pixel the sum of its colour channels. */
struct MapImage {
  int width = 0;
  int height = 0;
  int channels = 1;
  /** White in one channel. */
  int white = 255;
  std::vector<std::uint16_t> pixels;
};

/** The largest image, in pixels: 16384 by 16384. Reading one takes up to 2 GB of memory. */
constexpr std::uint64_t kMostPixels = 1 << 28;

/** Throws std::runtime_error for a picture of more than kMostPixels. */
void checkPixels(std::uint64_t width, std::uint64_t height);

/** Reads a PGM (P2, P5) or PNG image of 8 bits a channel; throws std::runtime_error. */
MapImage readMapImage(const std::filesystem::path& path);

}  // namespace QV::robot
