#pragma once

#include <cstddef>
#include <string>

namespace QV::app {

/** Returns the characters per line of standard output: the terminal's, else COLUMNS, else 0. */
std::size_t getLineWidth();

/** Folds lines longer than `width` at words, each under its own text; 0 folds none. */
std::string foldLines(const std::string& text, std::size_t width);

}  // namespace QV::app
