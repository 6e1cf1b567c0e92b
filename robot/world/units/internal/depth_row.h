#pragma once

#include <cstdint>
#include <limits>
#include <vector>

namespace QV::robot {

/** Stands for no depth, too, in a row of millimetres. */
inline constexpr std::uint16_t kFarthest = std::numeric_limits<std::uint16_t>::max();

/** Integers from `low` to `high`. */
struct DepthLimits {
  std::uint16_t low;
  std::uint16_t high;

  bool contain(std::uint16_t depth) const { return depth >= low && depth <= high; }
};

/**
 * Writes a row of a picture where there are only walls and the floor: the nearer of both, 0 unless
 * `seen` contains it. A wall counts if `wallLimits` contain it. All in millimetres, as many pixels
 * as walls.
 */
void drawPlainRow(const std::vector<std::uint16_t>& walls, DepthLimits wallLimits,
                  std::uint16_t floor, DepthLimits seen, std::uint16_t* pixels);

}  // namespace QV::robot
