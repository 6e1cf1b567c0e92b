#include <cmath>
#include <fstream>
#include <sstream>

#include <gtest/gtest.h>

#include "session/open.h"
#include "tests/support/real_data.h"

namespace QV {
namespace {

constexpr float kPi = 3.14159265f;

using Words = std::vector<std::string>;

/** The words of the lines that start with `start`. */
std::vector<Words> linesOf(const std::string& path, const std::string& start) {
  std::ifstream file(path);
  std::vector<Words> lines;
  for (std::string text; std::getline(file, text);) {
    if (!text.starts_with(start)) continue;
    std::istringstream line(text);
    lines.emplace_back(std::istream_iterator<std::string>(line),
                       std::istream_iterator<std::string>());
  }
  return lines;
}

void expectPointsOf(const Words& scan, const std::vector<Math::Position3D>& points) {
  std::size_t next = 0;
  for (std::size_t beam = 0; beam < 361; ++beam) {
    const float range = std::stof(scan[2 + beam]);
    if (range >= 80.0f) continue;
    ASSERT_LT(next, points.size());
    const float angle = (-90.0f + 0.5f * static_cast<float>(beam)) * kPi / 180.0f;
    EXPECT_NEAR(points[next].x, range * std::cos(angle), 1e-4f);
    EXPECT_NEAR(points[next].y, range * std::sin(angle), 1e-4f);
    ++next;
  }
  EXPECT_EQ(next, points.size());
}

/** Replays a log and compares each record with its line. */
void replayScans(const std::string& path) {
  const auto scans = linesOf(path, "FLASER 361 ");
  const auto session = session::openRecording(path);
  session->subscribe("mine", {"Laser"});
  for (const Words& scan : scans) {
    const session::Snapshot seen = session->look();
    const auto records = session::recordsOf(seen);
    ASSERT_EQ(records.size(), 1u);
    const Math::MetricalData& record = records[0];
    expectPointsOf(scan, record.points);
    const auto laser = seen.pose * Math::pose2DFromTransform(record.sensorTransform);
    EXPECT_NEAR(laser.x, std::stof(scan[363]), 1e-4f);
    EXPECT_NEAR(laser.y, std::stof(scan[364]), 1e-4f);
    EXPECT_NEAR(std::remainder(laser.theta - std::stof(scan[365]), 2 * kPi), 0.0f, 1e-4f);
    const ko::Duration stamp = record.timestamp.time_since_epoch();
    const double elapsed = std::stod(scan[369]) - std::stod(scans[0][369]);
    EXPECT_NEAR(static_cast<double>(stamp.count()) * 1e-9, elapsed, 1e-3);
    ASSERT_EQ(session->step(), &scan != &scans.back());
  }
}

TEST(ReplayedLogs, aLaserGivesThePointsOfEachLoggedScan) {
  for (const char* name : {"mrpt_localization_demo.log", "sena_telecom_one_loop.log"}) {
    const auto path = test::findRealData(std::string("lidar/") + name);
    if (!path) GTEST_SKIP() << "no " << name << " in QV_DATA";
    SCOPED_TRACE(name);
    replayScans(*path);
  }
}

TEST(ReplayedLogs, sonarsGiveArcsAtTheLoggedRanges) {
  const auto measurements = test::findRealData("sonar/measurement.txt");
  const auto poses = test::findRealData("sonar/poses.txt");
  if (!measurements || !poses) GTEST_SKIP() << "no sonar log in QV_DATA";
  const float degrees[] = {-90.0f, -37.5f, -22.5f, -7.5f, 7.5f, 22.5f, 37.5f, 90.0f};
  const auto lines = linesOf(*measurements, "");
  const auto places = linesOf(*poses, "");
  ASSERT_EQ(lines.size(), places.size());
  const auto session = session::openRecording(*measurements, *poses);
  session->subscribe("mine", {"Sonar"});
  for (std::size_t step = 0; step < lines.size(); ++step) {
    const Words& line = lines[step];
    const session::Snapshot seen = session->look();
    const auto records = session::recordsOf(seen);
    ASSERT_EQ(records.size(), 8u);
    EXPECT_NEAR(seen.pose.x, std::stof(places[step][1]) * 1e-3f, 1e-4f);
    EXPECT_NEAR(seen.pose.y, std::stof(places[step][2]) * 1e-3f, 1e-4f);
    for (std::size_t i = 0; i < 8; ++i) {
      const Math::MetricalData& record = records[i];
      EXPECT_EQ(record.timestamp.time_since_epoch(),
                boost::chrono::milliseconds(std::stoi(line[0]) - std::stoi(lines[0][0])));
      ASSERT_EQ(record.points.size(), 15u);
      for (const auto& point : record.points) {
        EXPECT_NEAR(1000.0f * Math::norm(point), std::stof(line[i + 1]), 1e-2f);
        EXPECT_LT(std::abs(std::atan2(point.y, point.x)), kPi / 18.0f);
      }
      const auto place = Math::pose2DFromTransform(record.sensorTransform);
      EXPECT_NEAR(place.theta, degrees[i] * kPi / 180.0f, 1e-5f);
    }
    ASSERT_EQ(session->step(), step + 1 < lines.size());
  }
}

}  // namespace
}  // namespace QV
