#include <algorithm>
#include <cmath>
#include <filesystem>

#include <gmock/gmock.h>

#include "ros2/bag/bag_reader.h"
#include "ros2/messages/sensor_msgs.h"
#include "ros2/recording/session_replay.h"
#include "session/internal/seconds.h"
#include "tests/support/real_data.h"
#include "tests/support/temporary_folder.h"

namespace QV::ros2 {
namespace {

using Points = std::vector<Math::Position3D>;

/** Where the beams of a scan met something, in its frame. */
Points echoesOf(const sensor_msgs::LaserScan& scan) {
  Points echoes;
  for (std::size_t i = 0; i < scan.ranges.size(); ++i) {
    const float range = scan.ranges[i];
    const float angle = scan.angle_min + static_cast<float>(i) * scan.angle_increment;
    if (range >= scan.range_min && range < scan.range_max)
      echoes.push_back({range * std::cos(angle), range * std::sin(angle), 0.0f});
  }
  return echoes;
}

/** A scan's echoes, and its log time since the start of the recording, in s. */
struct Scan {
  double seconds;
  Points echoes;
};

std::vector<Scan> scansIn(const std::string& path) {
  BagReader bag(path);
  const std::uint64_t start = bag.getTimes().start;
  std::vector<Scan> scans;
  while (const auto message = bag.next()) {
    if (message->topic->type != sensor_msgs::LaserScan::getType().getName()) continue;
    scans.push_back({1e-9 * static_cast<double>(message->logTime - start),
                     echoesOf(fromCdr<sensor_msgs::LaserScan>(message->data))});
  }
  return scans;
}

void expectScan(const Scan& scan, const Math::MetricalData& record) {
  // Lasers tell the time of a scan in whole milliseconds.
  EXPECT_NEAR(session::inSeconds(record.timestamp.time_since_epoch()), scan.seconds, 0.0011);
  ASSERT_EQ(record.points.size(), scan.echoes.size());
  for (std::size_t i = 0; i < scan.echoes.size(); ++i) {
    const Math::Position3D point = record.sensorTransform * record.points[i];
    ASSERT_NEAR(point.x, scan.echoes[i].x, 1e-3f);
    ASSERT_NEAR(point.y, scan.echoes[i].y, 1e-3f);
  }
}

/** Every record of every sensor, in the order of time. */
std::map<std::string, std::vector<Math::MetricalData>> play(const std::string& path) {
  SessionReplay sut(path);
  sut.begin();
  std::map<std::string, std::vector<Math::MetricalData>> records;
  while (sut.getSession().step()) {
    for (const auto& record : session::recordsOf(sut.look()))
      records[record.sensorName].push_back(record);
  }
  return records;
}

struct RealRecordingsTest : testing::Test {
  void SetUp() override {
    const auto found = test::findRealData("bags");
    if (!found) GTEST_SKIP() << "no recordings";
    bags = *found;
  }

  std::string bags;
};

TEST_F(RealRecordingsTest, eachScanBecomesTheRecordOfItsBeams) {
  const test::TemporaryFolder folder;
  const auto straight = std::filesystem::path(bags) / "ros2_native/mumble_straight.db3";
  std::filesystem::copy_file(straight, folder / "mumble_imu_lidar_bag_0.db3");
  std::filesystem::copy_file(std::filesystem::path(straight).replace_extension("metadata.yaml"),
                             folder / "metadata.yaml");
  for (const std::string& path :
       {folder.string(), straight.string(), bags + "/leg_tracker_simple.mcap"}) {
    const auto scans = scansIn(path);
    const auto records = play(path).at("scan");
    EXPECT_GT(scans.size(), 100u) << path;
    ASSERT_EQ(records.size(), scans.size()) << path;
    for (std::size_t i = 0; i < scans.size(); ++i) {
      SCOPED_TRACE(path + " scan " + std::to_string(i));
      ASSERT_NO_FATAL_FAILURE(expectScan(scans[i], records[i]));
    }
  }
}

TEST_F(RealRecordingsTest, eachTopicOfScansAndCloudsBecomesASensor) {
  const std::pair<const char*, std::map<std::string, std::size_t>> recordings[] = {
      {"/sick_lms_rms.mcap",
       {{"cloud", 89},
        {"cloud_radar_rawtarget", 139},
        {"cloud_radar_track", 108},
        {"sick_lms_1xx_scan", 89}}},
      {"/ros2_native/truck_clouds.mcap", {{"cloud_1", 1}, {"cloud_2", 1}, {"cloud_3", 1}}}};
  for (const auto& [file, expected] : recordings) {
    std::map<std::string, std::size_t> counts;
    for (const auto& [sensor, records] : play(bags + file)) {
      counts[sensor] = records.size();
      EXPECT_TRUE(std::ranges::any_of(records, [](const auto& r) { return !r.points.empty(); }))
          << sensor;
    }
    EXPECT_EQ(counts, expected) << file;
  }
}

TEST_F(RealRecordingsTest, aRobotWithoutSensorsIsRefused) {
  EXPECT_THAT([&] { SessionReplay sut(bags + "/husky_odom_imu.mcap"); },
              testing::ThrowsMessage<std::runtime_error>(
                  testing::HasSubstr("husky_odom_imu.mcap: a topic of LaserScan, Range, a depth")));
}

}  // namespace
}  // namespace QV::ros2
