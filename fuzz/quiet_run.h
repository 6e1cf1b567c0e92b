#pragma once

#include <cstdint>

#include "fuzz/value_decoder.h"
#include "platform/ko/log.h"
#include "platform/ko/simulated_time.h"

extern "C" const char* __asan_default_options() {
  return QV::fuzz::kQuick;
}

namespace QV::fuzz {

/** Runs an input without log lines, in simulated time. Include this in one source of a fuzzer. */
template <typename Read>
int runQuietly(const Read& read, const std::uint8_t* data, std::size_t size) {
  static const bool isQuiet = (ko::log::setLevel(ko::log::Level::silent), true);
  static const ko::SimulatedTime time;
  if (isQuiet) read(data, size);
  return 0;
}

}  // namespace QV::fuzz
