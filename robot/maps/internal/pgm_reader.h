#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "robot/maps/internal/map_image.h"

namespace QV::robot {

/**
 * Reads a PGM from memory, P2 (text) or P5 (bytes). OpenCV's own reader shifts the pixels of a P5
 * whose header ends in CR LF, and wants a blank after the last number of a P2.
 */
class PgmReader {
 public:
  explicit PgmReader(std::string_view bytes) : bytes(bytes) {}

  /** Throws std::runtime_error that names the line and what was expected. */
  MapImage read();

 private:
  void xReadHeader();
  void xReadText();
  void xReadBytes();
  void xSkipBlanks();
  int xReadNumber(const char* what, int low, int high);
  [[noreturn]] void xFail(const std::string& message) const;

  std::string_view bytes;
  std::size_t position = 0;
  MapImage image;
};

}  // namespace QV::robot
