#pragma once

#include <string>

#include <CLI/CLI.hpp>

namespace QV::app {

/** Formats help. Lines are folded at the width of the terminal; elsewhere they stay whole. */
class HelpFormatter : public CLI::Formatter {
 public:
  std::string make_help(const CLI::App* app, std::string name,
                        CLI::AppFormatMode mode) const override;

  /** Returns an option's names. */
  std::string make_option_name(const CLI::Option* option, bool isPositional) const override;

  /** Returns an option's type, and whether it may be repeated or is required. */
  std::string make_option_opts(const CLI::Option* option) const override;

  /** Returns an option's description and default. */
  std::string make_option_desc(const CLI::Option* option) const override;
};

}  // namespace QV::app
