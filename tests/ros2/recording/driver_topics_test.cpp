#include "ros2/recording/internal/driver_topics.h"

#include <cmath>
#include <limits>

#include <gmock/gmock.h>

#include "session/open.h"

namespace QV::ros2 {
namespace {

/** Keeps all scans. */
struct Scans : MessageSink {
  std::uint16_t addTopic(const SessionTopic&) override { return count++; }
  void xWrite(std::uint16_t, std::uint64_t, const MessageType& type, const void* message) override {
    if (&type == &sensor_msgs::LaserScan::getType())
      all.push_back(*static_cast<const sensor_msgs::LaserScan*>(message));
  }

  std::uint16_t count = 0;
  std::vector<sensor_msgs::LaserScan> all;
};

struct DriverTopicsTest : testing::Test {
  /** Sets both keys of a beam, each at a time of its own, as in the machine's time. */
  void note(std::size_t beam, const QVValue& x, const QVValue& y = 0.0f) {
    sut.note(keys[2 * beam], x);
    sut.write(time += ko::Duration(1000));
    sut.note(keys[2 * beam + 1], y);
    sut.write(time += ko::Duration(1000));
  }
  void note(const std::vector<QVValue>& ranges) {
    for (std::size_t i = 0; i < keys.size() / 2; ++i)
      note(i, i < ranges.size() ? ranges[i] : QVValue(1.0f));
  }

  const std::unique_ptr<session::Session> session = session::openVirtual("porter");
  const Model::Robot& robot = *session->getDescription();
  const std::vector<std::string> keys = robot.sensorConfigs.at("FrontLaser").memoryKeys;
  ko::Clock::time_point time = ko::Clock::now();
  Scans scans;
  DriverTopics sut{scans, robot, session->getKinds(), FrameNames(*session)};
};

TEST_F(DriverTopicsTest, aMeasurementIsOneScanHoweverLongItsKeysTake) {
  note({1.5f});
  note({1.75f});
  ASSERT_EQ(scans.all.size(), 2u);
  EXPECT_EQ(scans.all[0].ranges[0], 1.5f);
  EXPECT_EQ(scans.all[1].ranges[0], 1.75f);
  // Whoever begins to hear amid one waits for the next.
  for (std::size_t beam = 5; beam < keys.size() / 2; ++beam) note(beam, 2.0f);
  EXPECT_EQ(scans.all.size(), 2u);
  note({2.5f});
  EXPECT_EQ(scans.all.size(), 3u);
}

TEST_F(DriverTopicsTest, aRangeThatIsNoneSaysWhy) {
  note({100.0f, 0.01f, std::numeric_limits<float>::quiet_NaN(), QVValue("broken")});
  ASSERT_EQ(scans.all.size(), 1u);
  const auto& ranges = scans.all[0].ranges;
  EXPECT_EQ(ranges[0], std::numeric_limits<float>::infinity());
  EXPECT_EQ(ranges[1], -std::numeric_limits<float>::infinity());
  EXPECT_TRUE(std::isnan(ranges[2]) && std::isnan(ranges[3]));
}

}  // namespace
}  // namespace QV::ros2
