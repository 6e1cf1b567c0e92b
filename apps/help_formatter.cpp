#include "apps/help_formatter.h"

#include "apps/output/lines.h"

namespace QV::app {

std::string HelpFormatter::make_help(const CLI::App* app, std::string name,
                                     CLI::AppFormatMode mode) const {
  return foldLines(CLI::Formatter::make_help(app, std::move(name), mode), getLineWidth());
}

std::string HelpFormatter::make_option_name(const CLI::Option* option, bool isPositional) const {
  const std::string name = CLI::Formatter::make_option_name(option, isPositional);
  // The parser adds the value of a flag without one: "--use-sim-time{true}".
  return name.substr(0, name.find('{'));
}

std::string HelpFormatter::make_option_opts(const CLI::Option* option) const {
  std::string text;
  if (option->get_type_size() == 0) return text;
  const std::string type = get_label(option->get_type_name());
  const bool isFlag = option->get_expected_max() == 0;
  if (!type.empty()) text += isFlag ? "[=" + type + "]" : " " + type;
  if (option->get_expected_max() == CLI::detail::expected_max_vector_size) text += " ...";
  if (option->get_required()) text += " (required)";
  return text;
}

std::string HelpFormatter::make_option_desc(const CLI::Option* option) const {
  const std::string standard = option->get_default_str();
  return option->get_description() + (standard.empty() ? "" : " (default: " + standard + ")");
}

}  // namespace QV::app
