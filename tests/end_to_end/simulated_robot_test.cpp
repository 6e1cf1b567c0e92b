#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <numbers>
#include <random>
#include <set>

#include <gtest/gtest.h>

#include "robot/world/map_files.h"
#include "sensor/core/scoped_subscription.h"
#include "sensor/simulation/simulated_sensor_manager.h"
#include "tests/support/sampled_ray.h"

namespace QV {
namespace {

constexpr float kOccupiedAbove = 0.4f;
constexpr int kPosesPerRobot = 12;
constexpr float kPi = std::numbers::pi_v<float>;

std::string dataFolder() {
  const char* folder = std::getenv("QV_DATA");
  return folder ? folder : "";
}

/** Poses in free cells, the same for each seed. */
std::vector<Math::Pose2D> freePoses(const OccupancyMap& map, unsigned seed) {
  std::mt19937 random(seed);
  std::uniform_int_distribution<int> columns(0, map.getWidth() - 1);
  std::uniform_int_distribution<int> rows(0, map.getHeight() - 1);
  std::uniform_real_distribution<float> within(0.05f, 0.95f);
  std::uniform_real_distribution<float> heading(-kPi, kPi);
  std::vector<Math::Pose2D> poses;
  while (poses.size() < kPosesPerRobot) {
    const int column = columns(random);
    const int row = rows(random);
    const Math::Pose2D cell((static_cast<float>(column) + within(random)) * map.getResolution(),
                            (static_cast<float>(row) + within(random)) * map.getResolution(),
                            heading(random));
    if (map.getOccupancy(column, row) <= kOccupiedAbove) poses.push_back(map.getOrigin() * cell);
  }
  return poses;
}

float rayAngle(const Math::SensorFieldOfView2D& fov, std::size_t i, std::size_t count) {
  const auto share = static_cast<float>(i);
  if (fov.angularRange >= 2.0f * kPi) return -kPi + share * 2.0f * kPi / static_cast<float>(count);
  return -0.5f * fov.angularRange + share * fov.angularRange / static_cast<float>(count - 1);
}

/** The reading that a point of an all-rays record stands for. */
RangeReading readingOf(const Math::MetricalData& record, std::size_t i) {
  const auto& point = record.points[i];
  const float range = std::hypot(point.x, point.y);
  const auto& [minRange, maxRange, angularRange, rayCount] = record.fieldOfView;
  const bool miss = range >= maxRange * (1.0f - 1e-5f);
  // Through sine and cosine a range at the lower limit comes back a rounding away from it.
  const bool nearest = std::abs(range - minRange) < 1e-5f;
  return {miss      ? maxRange
          : nearest ? minRange
                    : range,
          rayAngle(record.fieldOfView, i, record.points.size()), miss ? 1 : 0};
}

void checkAllRays(const Math::MetricalData& record, const OccupancyMap& map,
                  const Math::Pose2D& pose, double step) {
  ASSERT_EQ(record.points.size(), static_cast<std::size_t>(record.fieldOfView.rayCount));
  for (std::size_t i = 0; i < record.points.size(); ++i) {
    const RangeReading reading = readingOf(record, i);
    const auto& point = record.points[i];
    // The point's own direction, so that the ray is cast where the record says it was.
    EXPECT_NEAR(std::remainder(std::atan2(point.y, point.x) - reading.angle, 2.0f * kPi), 0.0,
                1e-4);
    EXPECT_TRUE(
        test::agreesWithSamples(reading, map, record.fieldOfView, pose, kOccupiedAbove, step))
        << record.sensorName << ", ray " << i;
  }
}

/** Whether some ray of the fan lies in a stopping cell at the range of the record's echo. */
bool isStoppedNear(const Math::MetricalData& record, const OccupancyMap& map,
                   const Math::Pose2D& pose, double step) {
  const auto count = static_cast<std::size_t>(record.fieldOfView.rayCount);
  for (std::size_t i = 0; i < count; ++i) {
    const float angle = rayAngle(record.fieldOfView, i, count);
    const test::SampledRay ray(map, pose, angle, kOccupiedAbove);
    if (ray.isStoppedNear(record.points[0].x, step)) return true;
  }
  return false;
}

void checkNearestEcho(const Math::MetricalData& record, const OccupancyMap& map,
                      const Math::Pose2D& pose, double step) {
  const auto& fov = record.fieldOfView;
  double nearest = INFINITY;
  for (int i = 0; i < fov.rayCount; ++i) {
    const float angle =
        rayAngle(fov, static_cast<std::size_t>(i), static_cast<std::size_t>(fov.rayCount));
    const test::SampledRay ray(map, pose, angle, kOccupiedAbove);
    nearest = std::min(nearest, ray.findRange(fov.maxRange, step));
  }
  if (std::isinf(nearest)) {
    // What only the corner of a cell stops may lie between two samples.
    EXPECT_TRUE(record.points.empty() || isStoppedNear(record, map, pose, step));
    return;
  }
  if (nearest > fov.maxRange - 2 * step && record.points.empty()) return;
  ASSERT_EQ(record.points.size(), 1u);
  const double expected = std::max<double>(nearest, fov.minRange);
  EXPECT_LE(record.points[0].x, expected + 1e-4) << record.sensorName;
  // Nearer than the samples show only where a ray cuts the corner of a cell between two of them.
  if (record.points[0].x < expected - 2 * step) {
    EXPECT_TRUE(isStoppedNear(record, map, pose, step)) << record.sensorName;
  }
  EXPECT_EQ(record.points[0].y, 0.0f);
}

void checkRobot(int kind, OccupancyMap& map, const std::string& what) {
  sensor::SimulatedSensorManager manager(kind, &map);
  const sensor::ScopedSubscription subscription(manager, "test");
  const double step = 0.02 * map.getResolution();
  for (const auto& pose : freePoses(map, 20u + static_cast<unsigned>(kind))) {
    SCOPED_TRACE(what + ", kind " + std::to_string(kind));
    manager.setPose2D(pose, pose);
    const auto records = manager.getMetricalData();
    ASSERT_EQ(records.size(), manager.getSensorList().size());
    for (const auto& record : records) {
      const bool allRays = record.familyName == "Laser" || record.familyName == "Asus";
      (allRays ? checkAllRays : checkNearestEcho)(record, map, pose, step);
    }
  }
}

class SimulatedRobotOnRealMap : public testing::TestWithParam<std::string> {};

TEST_P(SimulatedRobotOnRealMap, readsWhatDenseSamplingOfTheMapShows) {
  if (dataFolder().empty()) GTEST_SKIP() << "QV_DATA names no folder of real maps";
  OccupancyMap map = robot::loadMap(dataFolder() + "/maps/" + GetParam());
  for (int kind : {-1, 0, 1}) checkRobot(kind, map, GetParam());
}

INSTANTIATE_TEST_SUITE_P(EveryKind, SimulatedRobotOnRealMap,
                         testing::Values("lse_arena.yaml", "testmap.yaml",
                                         "pal_small_office/map.yaml", "turtlebot3/map.yaml",
                                         "intel.yaml", "columbia.yaml",
                                         "pal_willow_garage/map.yaml"),
                         [](const auto& parameter) {
                           std::string name = parameter.param;
                           for (char& c : name)
                             c = std::isalnum(static_cast<unsigned char>(c)) ? c : '_';
                           return name;
                         });

}  // namespace
}  // namespace QV
