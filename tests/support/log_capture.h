#pragma once

#include <mutex>
#include <string>
#include <vector>

#include "platform/ko/log.h"

namespace QV::test {

/** A record as "level category.method: message". */
inline std::string lineOf(const ko::log::Record& record) {
  return std::string(ko::log::getName(record.level)) + " " + record.category + "." + record.method +
         ": " + record.message;
}

/** Collects every log line while it lives, and keeps standard error quiet. */
class LogCapture {
 public:
  LogCapture()
      : sink(ko::log::Level::verbose, [this](const ko::log::Record& record) { add(record); }) {
    ko::log::setLevel(ko::log::Level::silent);
  }
  ~LogCapture() { ko::log::setLevel(ko::log::Level::warning); }

  std::vector<ko::log::Record> records() const {
    std::lock_guard<std::mutex> lock(mutex);
    return collected;
  }

  /** Each line up to `level`. */
  std::vector<std::string> lines(ko::log::Level level = ko::log::Level::verbose) const {
    std::vector<std::string> result;
    for (const auto& record : records()) {
      if (record.level <= level) result.push_back(lineOf(record));
    }
    return result;
  }

  void clear() {
    std::lock_guard<std::mutex> lock(mutex);
    collected.clear();
  }

 private:
  void add(const ko::log::Record& record) {
    std::lock_guard<std::mutex> lock(mutex);
    collected.push_back(record);
  }

  mutable std::mutex mutex;
  std::vector<ko::log::Record> collected;
  ko::log::ScopedSink sink;
};

}  // namespace QV::test
