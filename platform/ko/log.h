#pragma once

#include <deque>
#include <locale>
#include <mutex>
#include <optional>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include <boost/function.hpp>
#include <boost/shared_ptr.hpp>

#include "platform/api.h"
#include "platform/ko/clock.h"

/**
 * The log: lines with a level, a category and a method's name, on standard error and to sinks.
 * `log::error("Navigation.Sensor", "subscribe") << text << number;` writes one line; nothing is
 * formatted if the line is not wanted. Thread-safe.
 */
namespace ko::log {

enum class Level { silent, fatal, error, warning, info, verbose };

struct Record {
  Level level = Level::silent;
  std::string category;
  std::string method;
  std::string message;
  Clock::time_point timestamp;
};

/** The name of a level: "fatal", "error", ... */
QV_API const char* getName(Level level);

/** Sets the lowest level that standard error shows, for all categories. At start it is warning. */
QV_API void setLevel(Level level);

/** Sets the lowest level of one category, on standard error and for every sink. */
QV_API void setLevel(const std::string& category, Level level);

/** Removes the level that setLevel() set for one category. */
QV_API void resetLevel(const std::string& category);

/** True if standard error or a sink shows such a line. */
QV_API bool isEnabled(Level level, std::string_view category);

/** Spells out line breaks and control characters, as in "\n" and "\x1b". */
QV_API std::string onOneLine(const std::string& text);

/** Writes one line; standard error shows the message in the form of onOneLine(). */
QV_API void write(Level level, std::string_view category, std::string_view method,
                  std::string message);

using Sink = boost::function<void(const Record&)>;
struct SinkEntry;

/**
 * Passes every record up to `level` to `sink`, on the thread that writes it.
 *
 * It ends with its scope. The destructor waits for a call in progress, and must not be called from
 * the sink. Lines that a sink logs itself reach standard error only.
 */
class QV_API ScopedSink {
 public:
  ScopedSink(Level level, Sink sink);
  ~ScopedSink();
  ScopedSink(const ScopedSink&) = delete;
  ScopedSink& operator=(const ScopedSink&) = delete;

 private:
  boost::shared_ptr<SinkEntry> entry;
};

/** Collects the last lines of the log that nobody has taken yet. Thread-safe. */
class QV_API LogRing {
 public:
  static constexpr std::size_t kMost = 200;

  LogRing();

  /** Takes the lines since the last call, at most kMost. */
  std::vector<Record> takeNew();

 private:
  void xNote(const Record& line);

  std::mutex mutex;
  std::deque<Record> lines;
  ScopedSink sink;
};

/** A line in the making, written when it goes out of scope. */
class Line {
 public:
  Line(Level level, std::string_view category, std::string_view method)
      : level(level), category(category), method(method) {
    if (isEnabled(level, category)) text.emplace().imbue(std::locale::classic());
  }
  ~Line() {
    if (text) write(level, category, method, text->str());
  }
  Line(const Line&) = delete;
  Line& operator=(const Line&) = delete;

  template <typename T>
  Line& operator<<(const T& value) {
    if (text) *text << value;
    return *this;
  }

 private:
  Level level;
  std::string_view category;
  std::string_view method;
  std::optional<std::ostringstream> text;
};

inline Line fatal(std::string_view category, std::string_view method) {
  return Line(Level::fatal, category, method);
}
inline Line error(std::string_view category, std::string_view method) {
  return Line(Level::error, category, method);
}
inline Line warning(std::string_view category, std::string_view method) {
  return Line(Level::warning, category, method);
}
inline Line info(std::string_view category, std::string_view method) {
  return Line(Level::info, category, method);
}
inline Line verbose(std::string_view category, std::string_view method) {
  return Line(Level::verbose, category, method);
}

}  // namespace ko::log
