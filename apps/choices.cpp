#include "apps/choices.h"

#include <algorithm>

#include <CLI/CLI.hpp>

#include "apps/guides/command_table.h"

namespace QV::app {

CLI::Option& takesOneOf(CLI::Option& option, const std::vector<std::string>& words) {
  std::string expected = joinedBy(", ", words);
  expected.replace(expected.rfind(", "), 2, " or ");
  option.type_name(joinedBy("|", words));
  option.check([words, expected](const std::string& word) {
    const bool isOne = std::ranges::find(words, word) != words.end();
    return isOne ? "" : expected + " expected, \"" + word + "\" given";
  });
  return option;
}

}  // namespace QV::app
