#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "platform/api.h"
#include "platform/ko/clock.h"
#include "platform/ko/log.h"

namespace ko::log::detail {

struct FoldedLine {
  Level level = Level::silent;
  std::string text;
};

/**
 * Folds warnings and errors that repeat: those that differ only in figures, of one level. The first
 * is told at once. The others are counted, and told by the last one with their number: ten seconds
 * later, or before a line that is new.
 */
class QV_API LineFolder {
 public:
  /** Takes a line of the time `now`; returns the lines to print in its place. */
  std::vector<FoldedLine> fold(Level level, const std::string& line, Clock::time_point now);
  /** Returns what is counted and not yet told. */
  std::vector<FoldedLine> flush(Clock::time_point now);

 private:
  struct Sort {
    Level level = Level::silent;
    std::string latest;
    Clock::time_point told;
    std::uint64_t times = 0;
  };

  static FoldedLine xTell(Sort& sort, Clock::time_point now);

  std::map<std::string, Sort> sorts;
};

}  // namespace ko::log::detail
