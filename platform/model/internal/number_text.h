#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platform/api.h"

namespace QV::Model {

/**
 * Reads the text as `atof` does in the C locale, whatever the locale of the process: the longest
 * prefix that is a number, after blanks; 0 without one. Meant for property values.
 */
QV_API double atofC(const std::string& text);

/** The finite number that the whole text is, or nothing. The same in every locale. */
QV_API std::optional<double> toNumber(std::string_view text);

/** The integer that the whole text is, or nothing. */
QV_API std::optional<int> toInteger(std::string_view text);

}  // namespace QV::Model
