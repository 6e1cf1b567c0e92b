#pragma once

#include <string>

#include "platform/api.h"

namespace QV::session {

/** The shortest text that reads back as the same float: 0.1 rather than 0.100000001. */
QV_API std::string shortest(float value);
QV_API std::string shortest(double value);
/** A position in a map that is held shifted, in the coordinates of its file to a millimetre. */
QV_API std::string shortest(float value, double shift);

/** Writes a number with `decimals` digits after the point. */
QV_API std::string fixed(double value, int decimals);

}  // namespace QV::session
