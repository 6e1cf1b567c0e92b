#pragma once

#include <string>

namespace QV::session {

/** The shortest text that reads back as the same float: 0.1 rather than 0.100000001. */
std::string shortest(float value);

/** With `decimals` digits after the point. */
std::string fixed(double value, int decimals);

}  // namespace QV::session
