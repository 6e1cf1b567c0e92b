#pragma once

#include <string>

namespace QV::app {

/** In one line, and so that nothing in it acts on a terminal: the text may come from a file. */
std::string printable(const std::string& text);

}  // namespace QV::app
