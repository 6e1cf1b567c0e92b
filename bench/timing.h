#pragma once

#include <algorithm>
#include <ctime>
#include <vector>

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

/** Of any values, but at least one. */
inline double medianOf(std::vector<double> values) {
  const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
  std::nth_element(values.begin(), middle, values.end());
  return *middle;
}

/**
 * What a peer takes as a multiple of our time: the median over the rounds, in each of which both
 * met the same machine.
 */
inline double ratioOf(const std::vector<double>& theirs, const std::vector<double>& ours) {
  std::vector<double> ratios(ours.size());
  for (std::size_t i = 0; i < ours.size(); ++i) ratios[i] = theirs[i] / ours[i];
  return medianOf(ratios);
}

}  // namespace QV::bench
