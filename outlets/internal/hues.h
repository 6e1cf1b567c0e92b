#pragma once

#include "outlets/internal/family_colour.h"

/** Colours that differ for every kind of colour vision. */
namespace QV::outlets::hues {

constexpr Colour kOrange{230, 159, 0};
constexpr Colour kSky{86, 180, 233};
constexpr Colour kGreen{0, 158, 115};
constexpr Colour kYellow{240, 228, 66};
constexpr Colour kBlue{0, 114, 178};
constexpr Colour kVermilion{213, 94, 0};
constexpr Colour kPurple{204, 121, 167};

}  // namespace QV::outlets::hues
