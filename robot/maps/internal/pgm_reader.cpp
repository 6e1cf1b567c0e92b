#include "robot/maps/internal/pgm_reader.h"

#include <algorithm>
#include <charconv>
#include <stdexcept>

#include "platform/navigation/occupancy_map.h"

namespace QV::robot {
namespace {

constexpr std::size_t kShownLetters = 20;

bool isBlank(char c) {
  return c == ' ' || (c >= '\t' && c <= '\r');
}

std::size_t pixelCount(const MapImage& image) {
  return static_cast<std::size_t>(image.width) * static_cast<std::size_t>(image.height);
}

}  // namespace

MapImage PgmReader::read() {
  const bool text = bytes.starts_with("P2");
  xReadHeader();
  // The size is checked before memory is allocated. A number in P2 takes at least two characters.
  const std::size_t most = text ? (bytes.size() - position) / 2 : bytes.size() - position;
  if (most < pixelCount(image)) {
    xFail(std::to_string(pixelCount(image)) + " pixels expected, the file ends before");
  }
  if (text) {
    xReadText();
  } else {
    xReadBytes();
  }
  return image;
}

void PgmReader::xReadHeader() {
  position = 2;
  image.width = xReadNumber("a width", 1, OccupancyMap::kMaxSide);
  image.height = xReadNumber("a height", 1, OccupancyMap::kMaxSide);
  checkPixels(static_cast<std::uint64_t>(image.width), static_cast<std::uint64_t>(image.height));
  image.white = xReadNumber("a maximum", 1, 255);
}

void PgmReader::xReadText() {
  image.pixels.resize(pixelCount(image));
  for (auto& pixel : image.pixels) {
    pixel = static_cast<std::uint16_t>(xReadNumber("a pixel", 0, image.white));
  }
}

void PgmReader::xReadBytes() {
  position += bytes.substr(position).starts_with("\r\n") ? 2 : 1;
  const std::string_view pixels = bytes.substr(std::min(position, bytes.size()));
  if (pixels.size() < pixelCount(image)) {
    xFail(std::to_string(pixelCount(image)) + " pixels expected, " + std::to_string(pixels.size()) +
          " found");
  }
  image.pixels.reserve(pixelCount(image));
  for (const char c : pixels.substr(0, pixelCount(image))) {
    const auto pixel = static_cast<std::uint8_t>(c);
    if (pixel > image.white) xFail("pixels up to " + std::to_string(image.white) + " expected");
    image.pixels.push_back(pixel);
  }
}

void PgmReader::xSkipBlanks() {
  while (position < bytes.size()) {
    if (bytes[position] == '#') {
      position = std::min(bytes.find('\n', position), bytes.size());
    } else if (isBlank(bytes[position])) {
      ++position;
    } else {
      return;
    }
  }
}

int PgmReader::xReadNumber(const char* what, int low, int high) {
  xSkipBlanks();
  const std::string_view rest = bytes.substr(position);
  const std::string_view word(rest.begin(), std::find_if(rest.begin(), rest.end(), isBlank));
  int number = 0;
  const auto [end, error] = std::from_chars(word.data(), word.data() + word.size(), number);
  const bool whole = error == std::errc() && end == word.data() + word.size();
  if (!whole || number < low || number > high) {
    xFail(std::string(what) + " from " + std::to_string(low) + " to " + std::to_string(high) +
          " expected, \"" + std::string(word.substr(0, kShownLetters)) + "\" found");
  }
  position += word.size();
  return number;
}

void PgmReader::xFail(const std::string& message) const {
  const std::string_view before = bytes.substr(0, position);
  throw std::runtime_error("line " +
                           std::to_string(1 + std::count(before.begin(), before.end(), '\n')) +
                           ": " + message);
}

}  // namespace QV::robot
