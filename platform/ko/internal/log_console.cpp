#include "platform/ko/internal/log_console.h"

#include <memory>

#include <spdlog/sinks/stdout_color_sinks.h>
#include <spdlog/spdlog.h>

namespace ko::log::detail {
namespace {

spdlog::logger& console() {
  static spdlog::logger* instance = [] {
    auto* logger =
        new spdlog::logger("qv", std::make_shared<spdlog::sinks::stderr_color_sink_mt>());
    logger->set_pattern("[%H:%M:%S.%e] [%^%l%$] %v");
    logger->set_level(spdlog::level::trace);
    return logger;
  }();
  return *instance;
}

spdlog::level::level_enum toSpdlog(Level level) {
  switch (level) {
    case Level::fatal:
      return spdlog::level::critical;
    case Level::error:
      return spdlog::level::err;
    case Level::warning:
      return spdlog::level::warn;
    case Level::info:
      return spdlog::level::info;
    case Level::verbose:
      return spdlog::level::debug;
    case Level::silent:
      break;
  }
  return spdlog::level::off;
}

}  // namespace

void writeToConsole(Level level, const std::string& line) {
  console().log(toSpdlog(level), spdlog::string_view_t(line));
}

}  // namespace ko::log::detail
