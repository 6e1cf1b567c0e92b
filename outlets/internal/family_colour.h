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
 * Returns the colour of a family of sensors in all outlets. The colours of the library's families
 * differ for every kind of colour vision. Another family gets one of a few more colours by its
 * name, always the same.
 */
QV_API Colour colourOfFamily(const std::string& family);

/** "#rrggbb". */
QV_API std::string toText(const Colour& colour);

}  // namespace QV::outlets
