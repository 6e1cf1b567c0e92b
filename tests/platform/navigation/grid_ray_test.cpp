#include "platform/navigation/internal/grid_ray.h"

#include <cmath>
#include <limits>
#include <numbers>

#include <gtest/gtest.h>

#include "platform/navigation/internal/plain_walk.h"

namespace QV::detail {
namespace {

constexpr double kDiagonal = 0.5 * std::numbers::sqrt2;
constexpr double kInfinity = std::numeric_limits<double>::infinity();

/** A chessboard with only the cells (i, i) free. */
OccupancyMap freeDiagonal(int size) {
  OccupancyMap map(size, size, 1.0f, {}, 1.0f);
  for (int i = 0; i < size; ++i) map.setOccupancy(i, i, 0.0f);
  return map;
}

double walk(const OccupancyMap& map, const GridPoint& start, double x, double y) {
  return walkPlainly(map, aimRay(map.getWidth(), map.getHeight(), start, x, y, kInfinity), 0.4f);
}

TEST(PlainWalk, aCornerThatIsOnlyTouchedIsNotCrossed) {
  const OccupancyMap map = freeDiagonal(100);
  EXPECT_EQ(walk(map, {0.5, 0.5}, kDiagonal, kDiagonal), kInfinity);
  EXPECT_EQ(walk(map, {99.75, 99.75}, -kDiagonal, -kDiagonal), kInfinity);
  EXPECT_EQ(walk(map, {0.0, 0.0}, kDiagonal, kDiagonal), kInfinity);
  EXPECT_EQ(walk(map, {-3.0, -3.0}, kDiagonal, kDiagonal), kInfinity);
  // Slopes of other whole ratios: every second corner.
  OccupancyMap steps(40, 20, 1.0f, {}, 1.0f);
  for (int column = 0; column < 40; ++column) steps.setOccupancy(column, column / 2, 0.0f);
  EXPECT_EQ(walk(steps, {0.0, 0.0}, 2 / std::sqrt(5.0), 1 / std::sqrt(5.0)), kInfinity);
  EXPECT_EQ(walk(steps, {40.0, 20.0}, -2 / std::sqrt(5.0), -1 / std::sqrt(5.0)), kInfinity);
}

TEST(PlainWalk, aRayThatClipsCornersByAHairPasses) {
  const OccupancyMap map = freeDiagonal(100);
  const double hair = 1e-9;
  EXPECT_NEAR(walk(map, {0.5, 0.5 + hair}, kDiagonal, kDiagonal), kDiagonal, 1e-6);
  EXPECT_NEAR(walk(map, {0.5, 0.5 - hair}, kDiagonal, kDiagonal), kDiagonal, 1e-6);
  EXPECT_NEAR(walk(map, {99.5 + hair, 99.5}, -kDiagonal, -kDiagonal), kDiagonal, 1e-6);
}

TEST(PlainWalk, distancesAreThoseOfTheCellsEdges) {
  OccupancyMap map(1000, 1000, 1.0f, {}, 0.0f);
  map.setOccupancy(900, 451, 1.0f);
  // Rises by half a row per column; enters the cell through its lower edge.
  const double length = std::sqrt(5.0) / 2;
  EXPECT_NEAR(walk(map, {0.25, 0.75}, 1 / length, 0.5 / length), 900.5 * length, 1e-9);
  // The next ray passes through its left edge.
  EXPECT_NEAR(walk(map, {0.0, 1.25}, 1 / length, 0.5 / length), 900.0 * length, 1e-9);
}

TEST(PlainWalk, aGrazingRayFindsTheColumnWhereItChangesRow) {
  OccupancyMap map(1000, 3, 1.0f, {}, 0.0f);
  for (int column = 0; column < 1000; ++column) map.setOccupancy(column, 2, 1.0f);
  for (const double slope : {1e-3, 1e-5, 1e-7}) {
    const double start = 2.0 - 777.5 * slope;
    const double length = std::sqrt(1.0 + slope * slope);
    EXPECT_NEAR(walk(map, {0.0, start}, 1 / length, slope / length), 777.5 * length, 1e-8);
    EXPECT_NEAR(walk(map, {1000.0, start}, -1 / length, slope / length), 777.5 * length, 1e-8);
  }
}

}  // namespace
}  // namespace QV::detail
