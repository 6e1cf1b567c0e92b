#include "platform/ko/internal/log_console.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <ctime>
#include <memory>
#include <mutex>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

#include <spdlog/details/os.h>
#include <spdlog/pattern_formatter.h>
#include <spdlog/sinks/stdout_color_sinks.h>
#include <spdlog/spdlog.h>

#include "platform/ko/internal/line_folder.h"
#include "platform/ko/internal/time_source.h"

namespace ko::log::detail {
namespace {

using Row = std::pair<Level, spdlog::level::level_enum>;

constexpr Row kLevels[] = {
    {Level::fatal, spdlog::level::critical}, {Level::error, spdlog::level::err},
    {Level::warning, spdlog::level::warn},   {Level::info, spdlog::level::info},
    {Level::verbose, spdlog::level::debug},  {Level::silent, spdlog::level::off}};

spdlog::level::level_enum toSpdlog(Level level) {
  return std::ranges::find(kLevels, level, &Row::first)->second;
}

Level toLevel(spdlog::level::level_enum level) {
  return std::ranges::find(kLevels, level, &Row::second)->first;
}

/** The time of a simulated world, "12.345 s", or else that of the day. */
class TimeOfLine : public spdlog::custom_flag_formatter {
 public:
  // The day that it is given is empty: a pattern without a time of the formatter's own gets none.
  void format(const spdlog::details::log_msg& line, const std::tm&,
              spdlog::memory_buf_t& text) override {
    char time[40];
    int size = 0;
    if (const auto simulated = ko::detail::simulatedNow()) {
      const auto seconds = static_cast<double>(simulated->time_since_epoch().count()) * 1e-9;
      size = std::snprintf(time, sizeof time, "%.3f s", seconds);
    } else {
      const std::tm day = spdlog::details::os::localtime(spdlog::log_clock::to_time_t(line.time));
      size = std::snprintf(time, sizeof time, "%02d:%02d:%02d.%03d", day.tm_hour, day.tm_min,
                           day.tm_sec, xMilliseconds(line));
    }
    text.append(time, time + size);
  }

  std::unique_ptr<spdlog::custom_flag_formatter> clone() const override {
    return std::make_unique<TimeOfLine>();
  }

 private:
  static int xMilliseconds(const spdlog::details::log_msg& line) {
    const auto whole = std::chrono::floor<std::chrono::milliseconds>(line.time.time_since_epoch());
    return static_cast<int>(whole.count() % 1000);
  }
};

/** The library's own name of the level. */
class LevelOfLine : public spdlog::custom_flag_formatter {
 public:
  void format(const spdlog::details::log_msg& line, const std::tm&,
              spdlog::memory_buf_t& text) override {
    const std::string_view name = getName(toLevel(line.level));
    text.append(name.data(), name.data() + name.size());
  }

  std::unique_ptr<spdlog::custom_flag_formatter> clone() const override {
    return std::make_unique<LevelOfLine>();
  }
};

spdlog::logger& console() {
  static spdlog::logger* instance = [] {
    auto* logger =
        new spdlog::logger("qv", std::make_shared<spdlog::sinks::stderr_color_sink_mt>());
    auto formatter = std::make_unique<spdlog::pattern_formatter>();
    formatter->add_flag<TimeOfLine>('*').add_flag<LevelOfLine>('&');
    formatter->set_pattern("[%*] [%^%&%$] %v");
    logger->set_formatter(std::move(formatter));
    logger->set_level(spdlog::level::trace);
    return logger;
  }();
  return *instance;
}

void print(const std::vector<FoldedLine>& lines) {
  for (const auto& [level, text] : lines)
    console().log(toSpdlog(level), spdlog::string_view_t(text));
}

struct Folding {
  std::mutex mutex;
  std::optional<LineFolder> folder;
};

// Never destroyed: threads may still log while the process ends.
Folding& folding() {
  static Folding* instance = new Folding;
  return *instance;
}

}  // namespace

void writeToConsole(Level level, const std::string& line) {
  const std::lock_guard lock(folding().mutex);
  auto& folder = folding().folder;
  print(folder ? folder->fold(level, line, Clock::now()) : std::vector{FoldedLine{level, line}});
}

void foldRepeats(bool on) {
  const std::lock_guard lock(folding().mutex);
  auto& folder = folding().folder;
  if (folder) print(folder->flush(Clock::now()));
  folder = on ? std::optional(LineFolder()) : std::nullopt;
}

void flushRepeats() {
  const std::lock_guard lock(folding().mutex);
  if (auto& folder = folding().folder) print(folder->flush(Clock::now()));
}

}  // namespace ko::log::detail
