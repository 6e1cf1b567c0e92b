#pragma once

#include <cstdint>
#include <string>

#include "platform/api.h"

namespace QV::outlets {

/** A colour of a screen: 0 to 255 each. */
struct QV_API Colour {
  std::uint8_t red;
  std::uint8_t green;
  std::uint8_t blue;

  bool operator==(const Colour&) const = default;
};

/**
 * The colour of a family of sensors wherever it is drawn. People with any kind of colour vision
 * tell those of the library's families apart; another family's is taken from a few more by its
 * name, and so stays the same.
 */
QV_API Colour colourOfFamily(const std::string& family);

/** "#rrggbb". */
QV_API std::string toText(const Colour& colour);

}  // namespace QV::outlets
