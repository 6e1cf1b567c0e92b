#pragma once

#include <string>
#include <vector>

#include <CLI/Option.hpp>

namespace QV::app {

/** Lets an option take one of these words only, and returns it. */
CLI::Option& takesOneOf(CLI::Option& option, const std::vector<std::string>& words);

}  // namespace QV::app
