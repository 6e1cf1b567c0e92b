#pragma once

#include <vector>

namespace QV::detail {

/** The directions of a fan's rays about its heading, from the right edge to the left; radians. */
struct FanDirections {
  FanDirections(float angularRange, int rayCount);

  float angularRange;
  int rayCount;
  std::vector<float> angles;
  /** The number of values behind the angles that may be read but mean nothing. */
  static constexpr int kMore = 8;
  std::vector<double> cosines;
  std::vector<double> sines;
};

/**
 * The directions of a fan of at least one ray over 0 or more radians. A thread keeps those of its
 * last few fans, for scans come by the thousand and fans by the dozen; the reference is good until
 * the thread's next call.
 */
const FanDirections& findFanDirections(float angularRange, int rayCount);

}  // namespace QV::detail
