#include <algorithm>
#include <cstdlib>
#include <iterator>
#include <random>

#include <gtest/gtest.h>

#include "platform/navigation/internal/scan_path.h"
#include "platform/navigation/occ_map_simulate_scan.h"
#include "robot/maps/map_files.h"
#include "tests/support/real_data.h"
#include "tests/support/sampled_ray.h"

namespace QV::robot {
namespace {

constexpr float kLimit = 0.4f;

/** A map of the real data and the shares of its cells, in percent. */
struct RealMap {
  const char* name;
  int width, height;
  double free, occupied;
};

const RealMap kTrinaryMaps[] = {{"lse_arena", 80, 60, 92.8, 7.2},
                                {"testmap", 10, 10, 71.0, 29.0},
                                {"pal_small_office/map", 204, 297, 90.3, 4.3},
                                {"turtlebot3/map", 384, 384, 5.4, 0.5},
                                {"intel", 579, 581, 57.4, 8.9},
                                {"columbia", 435, 350, 28.3, 71.7},
                                {"pal_willow_garage/map", 1113, 972, 73.5, 4.2},
                                {"range_libc/basement_hallways_5cm", 1200, 1200, 16.2, 0.8},
                                {"range_libc/huge_map", 4128, 10976, 37.0, 1.0}};

std::optional<std::string> findMap(const std::string& name) {
  return test::findRealData("maps/" + name + ".yaml");
}

double percentOf(const OccupancyMap& map, float occupancy) {
  const auto& cells = map.getCells();
  return 100.0 * static_cast<double>(std::count(cells.begin(), cells.end(), occupancy)) /
         static_cast<double>(cells.size());
}

TEST(RealMaps, loadWithTheirSizesAndSharesOfFreeCells) {
  for (const RealMap& expected : kTrinaryMaps) {
    const auto path = findMap(expected.name);
    if (!path) GTEST_SKIP() << "no " << expected.name << " in QV_DATA";
    SCOPED_TRACE(*path);
    const OccupancyMap map = loadMap(*path);
    EXPECT_EQ(map.getWidth(), expected.width);
    EXPECT_EQ(map.getHeight(), expected.height);
    EXPECT_NEAR(percentOf(map, 0.0f), expected.free, 0.06);
    EXPECT_NEAR(percentOf(map, 1.0f), expected.occupied, 0.06);
    EXPECT_NEAR(percentOf(map, 0.5f), 100.0 - expected.free - expected.occupied, 0.12);
  }
}

Math::Pose2D drawFreePose(const OccupancyMap& map, std::mt19937& random) {
  std::uniform_int_distribution<int> column(0, map.getWidth() - 1);
  std::uniform_int_distribution<int> row(0, map.getHeight() - 1);
  std::uniform_real_distribution<float> part(-0.4f, 0.4f);
  for (;;) {
    const auto centre = map.getCellCentre(column(random), row(random));
    const Math::Position2D position(centre.x + part(random) * map.getResolution(),
                                    centre.y + part(random) * map.getResolution());
    if (map.findOccupancy(position) == 0.0f) return {position.x, position.y, 8 * part(random)};
  }
}

TEST(RealMaps, scansAgreeWithDenseSamples) {
  const Math::SensorFieldOfView2D fans[] = {
      {0.0f, 3.5f, 6.2831855f, 100}, {0.3f, 2.0f, 1.0f, 20}, {0.5f, 8.0f, 1.0f, 50}};
  std::mt19937 random(4);
  std::vector<RangeReading> readings;
  for (const RealMap& real : kTrinaryMaps) {
    const auto path = findMap(real.name);
    if (!path) GTEST_SKIP() << "no " << real.name << " in QV_DATA";
    const OccupancyMap map = loadMap(*path);
    for (int i = 0; i < 60; ++i) {
      const Math::SensorFieldOfView2D& fan = fans[i % 3];
      const Math::Pose2D pose = drawFreePose(map, random);
      occMapSimulateScan(map, fan, pose, readings, kLimit);
      ASSERT_EQ(readings.size(), static_cast<std::size_t>(fan.rayCount));
      for (const RangeReading& reading : readings) {
        ASSERT_TRUE(test::agreesWithSamples(reading, map, fan, pose, kLimit, 0.005)) << *path;
      }
    }
  }
}

OccupancyMap withOrigin(const OccupancyMap& map, const Math::Pose2D& origin) {
  return OccupancyMap(map.getWidth(), map.getHeight(), map.getResolution(), origin, map.getCells());
}

/**
 * Draws a pose in or around a map: anywhere, or on an edge or corner; looking anywhere, along an
 * axis or a diagonal.
 */
Math::Pose2D drawHardPose(const OccupancyMap& map, std::mt19937& random) {
  const auto draw = [&](int from, int to) {
    return std::uniform_int_distribution<int>(from, to)(random);
  };
  std::uniform_real_distribution<float> part(-0.5f, 0.5f);
  const auto offset = [&] { return draw(0, 2) == 0 ? 0.5f : part(random); };
  const auto place = [&](int side) { return draw(0, 9) == 0 ? draw(-9, side + 9) : draw(0, side); };
  const auto centre = map.getCellCentre(place(map.getWidth()), place(map.getHeight()));
  const float heading = draw(0, 1) == 0
                            ? 0.7853982f * static_cast<float>(draw(-8, 8)) + map.getOrigin().theta
                            : 8.0f * part(random);
  return {centre.x + offset() * map.getResolution(), centre.y + offset() * map.getResolution(),
          heading};
}

// QV_SCAN_RAYS sets the number of rays; every SIMD level reads the same, bit for bit.
TEST(RealMaps, scansAreTheSameOnEverySimdLevel) {
  using detail::ScanPath;
  std::vector<const char*> allMaps{"depot_speed"};
  for (const RealMap& real : kTrinaryMaps) allMaps.push_back(real.name);
  const char* const wanted = std::getenv("QV_SCAN_RAYS");
  const long raysPerMap = (wanted != nullptr ? std::atol(wanted) : 200000) / std::ssize(allMaps);
  const Math::SensorFieldOfView2D fans[] = {
      {0.0f, 3.5f, 6.2831855f, 300},  {0.3f, 2.0f, 1.0f, 20},        {0.0f, 30.0f, 6.2831855f, 8},
      {0.0f, 30.0f, 6.2831855f, 720}, {0.0f, 8.0f, 1.5707964f, 101}, {0.15f, 0.16f, 0.6f, 20},
      {0.0f, 0.69f, 6.2831855f, 64}};
  std::mt19937 random(5);
  std::vector<RangeReading> expected;
  std::vector<RangeReading> readings;
  for (const char* const name : allMaps) {
    const auto file = findMap(name);
    if (!file) GTEST_SKIP() << "no " << name << " in QV_DATA";
    OccupancyMap map = loadMap(*file);
    for (long rays = 0; rays < raysPerMap; rays += std::ssize(readings)) {
      if (rays >= raysPerMap / 2 && map.getOrigin().theta != 0.6f) {
        map = withOrigin(map, {-3.0f, 2.0f, 0.6f});
      }
      const Math::SensorFieldOfView2D& fan = fans[random() % std::size(fans)];
      const Math::Pose2D pose = drawHardPose(map, random);
      simulateScan(map, fan, pose, expected, kLimit, ScanPath::plain);
      for (const ScanPath scanPath :
           {ScanPath::best, ScanPath::scalar, ScanPath::sse4, ScanPath::avx2}) {
        if (!detail::isSupported(scanPath)) continue;
        simulateScan(map, fan, pose, readings, kLimit, scanPath);
        ASSERT_EQ(readings, expected)
            << name << ", path " << static_cast<int>(scanPath) << ", from " << pose.x << ", "
            << pose.y << ", " << pose.theta;
      }
    }
  }
}

}  // namespace
}  // namespace QV::robot
