#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/api.h"

namespace QV::robot {

/** The words of one line of a log. Good as long as its file. */
class LogLine {
 public:
  LogLine(const std::string& path, int number, std::string_view text);

  /** Counted from 1. */
  int getNumber() const { return number; }
  std::size_t getSize() const { return words.size(); }
  std::string_view operator[](std::size_t index) const { return words[index]; }

  /** The rest throw std::runtime_error that names file and line. */
  void expectSize(std::size_t size) const;
  /** A number from `low` to `high`. */
  double toNumber(std::size_t index, const std::string& what, double low, double high) const;
  int toInteger(std::size_t index, const std::string& what, int low, int high) const;
  [[noreturn]] void fail(const std::string& message) const;
  [[noreturn]] void failAt(std::size_t index, const std::string& expected) const;

 private:
  const std::string* path;
  int number;
  std::vector<std::string_view> words;
};

/** A text file of lines, in memory. Not copyable: lines point into it. */
class QV_API LogFile {
 public:
  /** A file that can't be read, or of more than 256 MiB: std::runtime_error. */
  explicit LogFile(const std::string& path);
  /** A text that is in memory already. */
  LogFile(std::string path, std::string text);
  LogFile(const LogFile&) = delete;
  LogFile& operator=(const LogFile&) = delete;

  const std::string& getPath() const { return path; }

  /** The next line that is not blank and does not start with '#'; nothing at the end. */
  std::optional<LogLine> next();

 private:
  const std::string path;
  const std::string text;
  std::size_t position = 0;
  int number = 0;
};

}  // namespace QV::robot
