#pragma once

#include <string_view>
#include <vector>

namespace QV::app {

/** What the program says to some words, without its library. */
struct Answer {
  /** The words after the program's name, with a line break between them. */
  std::string_view words;
  std::string_view text;
  /** True if it is folded at the width of the terminal. */
  bool isFolded;
};

/** Version, help, manual pages and completion scripts. The build writes its source. */
std::vector<Answer> getAnswers();

}  // namespace QV::app
