#include "robot/world/chance/range_noise.h"

#include <cmath>
#include <vector>

#include <gtest/gtest.h>

namespace QV::robot {
namespace {

constexpr std::size_t kCount = 20000;
constexpr float kTrue = 3.0f;

WorldOptions noisy(std::uint64_t seed) {
  WorldOptions options;
  options.seed = seed;
  options.rangeNoise = 0.02f;
  options.dropOuts = 0.1f;
  return options;
}

std::vector<float> draw(const WorldOptions& options, const std::string& sensor) {
  RangeNoise sut(options, sensor);
  std::vector<float> ranges(kCount);
  for (float& range : ranges) range = sut.apply(kTrue);
  return ranges;
}

/** The statistics of those draws of two sensors in which neither is lost; with itself, of one. */
struct Statistics {
  Statistics(const std::vector<float>& a, const std::vector<float>& b) {
    double sum = 0.0;
    double products = 0.0;
    double count = 0.0;
    for (std::size_t i = 0; i < kCount; ++i) {
      if (std::isinf(a[i]) || std::isinf(b[i])) continue;
      ++count;
      sum += a[i] - kTrue;
      products += static_cast<double>(a[i] - kTrue) * (b[i] - kTrue);
    }
    kept = count / kCount;
    error = sum / count;
    covariance = products / count;
  }

  double kept = 0.0;
  double error = 0.0;
  double covariance = 0.0;
};

// Bounds of four standard errors: of the mean, the deviation, a covariance and a share.
TEST(RangeNoise, hasTheGivenDeviationAndShareOfLossesWithoutBias) {
  for (const std::uint64_t seed : {1, 2, 3}) {
    const auto ranges = draw(noisy(seed), "FrontLaser");
    const Statistics found(ranges, ranges);
    EXPECT_NEAR(found.error, 0.0, 4 * 0.02 / std::sqrt(0.9 * kCount)) << seed;
    EXPECT_NEAR(std::sqrt(found.covariance), 0.02, 4 * 0.02 / std::sqrt(2 * 0.9 * kCount)) << seed;
    EXPECT_NEAR(found.kept, 0.9, 4 * std::sqrt(0.1 * 0.9 / kCount)) << seed;
  }
}

TEST(RangeNoise, isIndependentForEachSensorAndSeed) {
  const auto ranges = draw(noisy(1), "FrontLaser");
  EXPECT_EQ(draw(noisy(1), "FrontLaser"), ranges);
  for (const auto& other : {draw(noisy(1), "LeftLaser"), draw(noisy(2), "FrontLaser"),
                            draw(noisy(std::uint64_t{1} << 32 | 1), "FrontLaser")}) {
    const Statistics common(ranges, other);
    EXPECT_NEAR(common.covariance, 0.0, 4 * 0.02 * 0.02 / std::sqrt(0.81 * kCount));
    EXPECT_NEAR(common.kept, 0.81, 4 * std::sqrt(0.81 * 0.19 / kCount)) << "losses, too";
  }
}

TEST(RangeNoise, aNearRangeIsNeverNegative) {
  WorldOptions options = noisy(1);
  options.rangeNoise = 1.0f;
  RangeNoise sut(options, "FrontLaser");
  for (std::size_t i = 0; i < 100; ++i) EXPECT_GE(sut.apply(0.1f), 0.0f);
}

}  // namespace
}  // namespace QV::robot
