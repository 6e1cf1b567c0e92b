#pragma once

#include <algorithm>
#include <cstddef>
#include <ctime>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

namespace QV::bench {

/** Seconds that this thread has run: what else the machine does counts for nobody. */
inline double cpuTime() {
  std::timespec time;
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
  return static_cast<double>(time.tv_sec) + 1e-9 * static_cast<double>(time.tv_nsec);
}

template <typename Run>
double secondsOf(Run run) {
  const double begin = cpuTime();
  run();
  return cpuTime() - begin;
}

/** Returns the median of any values, at least one. */
inline double medianOf(std::vector<double> values) {
  std::sort(values.begin(), values.end());
  return 0.5 * (values[(values.size() - 1) / 2] + values[values.size() / 2]);
}

/**
 * Returns the time of a peer as a multiple of ours: the median over the rounds, in each of which
 * both met the same machine.
 */
inline double ratioOf(const std::vector<double>& theirs, const std::vector<double>& ours) {
  std::vector<double> ratios(ours.size());
  for (std::size_t i = 0; i < ours.size(); ++i) ratios[i] = theirs[i] / ours[i];
  return medianOf(ratios);
}

/** A benchmark that sets its own times, told in milliseconds. */
template <typename Function, typename... Arguments>
void registerTimed(const std::string& name, Function function, const Arguments&... arguments) {
  benchmark::RegisterBenchmark(name.c_str(), function, arguments...)
      ->UseManualTime()
      ->Unit(benchmark::kMillisecond);
}

}  // namespace QV::bench
