#pragma once

#include <cstdint>
#include <string>

namespace QV::robot {

/** The size in pixels and the bits of one channel of one pixel, or of a palette's number. */
struct PngSize {
  std::uint32_t width;
  std::uint32_t height;
  int bitsPerSample;
};

/** Reads a PNG's head alone. Throws std::runtime_error if it is cut short. */
PngSize sizeOfPng(const std::string& png);

/**
 * The PNG without the chunks that no pixel depends on, so that a decoder has nothing to complain of
 * in them. One that is cut short or damaged throws std::runtime_error.
 */
std::string keepCriticalChunks(const std::string& png);

}  // namespace QV::robot
