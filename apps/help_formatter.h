#pragma once

#include <cstddef>
#include <string>

#include <CLI/CLI.hpp>

namespace QV::app {

/** Formats help. Lines are folded at the width of the terminal; elsewhere they stay whole. */
class HelpFormatter : public CLI::Formatter {
 public:
  std::string make_help(const CLI::App* app, std::string name,
                        CLI::AppFormatMode mode) const override;

  /** Returns an option's type and default, and whether it may be repeated or is required. */
  std::string make_option_opts(const CLI::Option* option) const override;
};

/** Folds lines longer than `width` at words, each under its own text; 0 folds none. */
std::string foldLines(const std::string& text, std::size_t width);

}  // namespace QV::app
