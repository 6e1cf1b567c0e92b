#include <limits>
#include <random>

#include "platform/navigation/occ_map_simulate_scan.h"
#include "tests/support/vector_targets.h"
#include "tests/support/vocabulary.h"

namespace QV {
namespace {

using Math::Pose2D;
using Math::SensorFieldOfView2D;

constexpr float kScansLimit = 0.4f;
constexpr float kNoNumber = std::numeric_limits<float>::quiet_NaN();

OccupancyMap makeMap(std::mt19937& random) {
  OccupancyMap map(90, 70, 0.1f, {-2.0f, 1.0f, 0.3f}, 0.0f);
  for (int i = 0; i < 150; ++i) {
    map.setOccupancy(static_cast<int>(random() % 90), static_cast<int>(random() % 70), 1.0f);
  }
  return map;
}

/** Draws poses in the map, and around it. */
std::vector<Pose2D> drawPoses(std::size_t count, std::mt19937& random) {
  std::uniform_real_distribution<float> place(-4.0f, 9.0f);
  std::vector<Pose2D> poses;
  while (poses.size() < count) poses.emplace_back(place(random), place(random), place(random));
  return poses;
}

std::vector<float> scanOneByOne(const OccupancyMap& map, const std::vector<Pose2D>& poses,
                                const SensorFieldOfView2D& fieldOfView) {
  std::vector<float> ranges;
  std::vector<RangeReading> readings;
  for (const Pose2D& pose : poses) {
    occMapSimulateScan(map, fieldOfView, pose, readings, kScansLimit);
    for (const RangeReading& reading : readings) ranges.push_back(reading.range);
  }
  return ranges;
}

TEST(Scans, readWhatSingleScansReadWithAnyNumberOfThreads) {
  std::mt19937 random(7);
  const OccupancyMap map = makeMap(random);
  std::vector<Pose2D> poses = drawPoses(61, random);
  poses[17].theta = kNoNumber;
  const SensorFieldOfView2D fans[] = {
      {0.0f, 4.0f, 6.2831855f, 130}, {1.5f, 3.0f, 1.0f, 20}, {0.0f, 0.3f, 6.2831855f, 5}};
  for (const SensorFieldOfView2D& fan : fans) {
    const std::vector<float> expected = scanOneByOne(map, poses, fan);
    std::vector<float> ranges(expected.size());
    const auto check = [&](int threads) {
      std::fill(ranges.begin(), ranges.end(), kNoNumber);
      occMapSimulateScans(map, poses, fan, ranges, kScansLimit, threads);
      EXPECT_EQ(ranges, expected) << threads << " threads, " << fan.rayCount << " rays";
    };
    test::forEachVectorTarget([&](const char*) { check(1); });
    for (const int threads : {2, 3, 256}) check(threads);
  }
  occMapSimulateScans(map, {}, fans[0], {}, kScansLimit, 2);
}

TEST(Scans, errorsNameTheExpectation) {
  const OccupancyMap map(3, 3, 1.0f, {});
  const std::vector<Pose2D> poses(3);
  std::vector<float> ranges(12, -1.0f);
  const auto error = [&](const SensorFieldOfView2D& fieldOfView, std::size_t size, int threads) {
    return errorOf([&] {
      occMapSimulateScans(map, poses, fieldOfView, {ranges.data(), size}, kScansLimit, threads);
    });
  };
  EXPECT_EQ(error({0, 2, 1, 4}, 11, 1),
            "occMapSimulateScans: 4 ranges for each of 3 poses expected, 11 given");
  EXPECT_EQ(error({0, 2, 1, 4}, 8, 1),
            "occMapSimulateScans: 4 ranges for each of 3 poses expected, 8 given");
  EXPECT_EQ(error({0, 2, 1, 0}, 0, 1),
            "occMapSimulateScans: a field of view expected, 0 rays over 1.000000 rad from 0.000000 "
            "to 2.000000 m given");
  for (const int threads : {0, -1, 257}) {
    EXPECT_EQ(error({0, 2, 1, 4}, 12, threads), "occMapSimulateScans: 1 to 256 threads expected, " +
                                                    std::to_string(threads) + " given");
  }
  EXPECT_THAT(ranges, testing::Each(-1.0f));
}

}  // namespace
}  // namespace QV
