#pragma once

#include <cstdint>

#include "fuzz/value_decoder.h"
#include "platform/ko/log.h"
#include "platform/ko/simulated_time.h"

extern "C" const char* __asan_default_options() {
  return QV::fuzz::kQuick;
}

namespace QV::fuzz {

/** The time of all inputs: it stands still unless a fuzzer advances it. */
inline ko::SimulatedTime& quietTime() {
  static ko::SimulatedTime time;
  return time;
}

/** Runs an input without log lines, in simulated time. Include this in one source of a fuzzer. */
template <typename Read>
int runQuietly(const Read& read, const std::uint8_t* data, std::size_t size) {
  static const bool isQuiet = (ko::log::setLevel(ko::log::Level::silent), true);
  quietTime();
  if (isQuiet) read(data, size);
  return 0;
}

}  // namespace QV::fuzz
