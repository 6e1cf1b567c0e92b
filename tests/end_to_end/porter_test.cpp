#include "tests/support/porter.h"

#include <cstdint>
#include <set>
#include <string>
#include <tuple>

#include "platform/ko/simulated_time.h"
#include "sensor/real/real_sensor_manager.h"
#include "tests/support/log_capture.h"
#include "tests/support/vocabulary.h"

namespace QV {
namespace {

TEST(Porter, anArmInFrontOfTheFrontSonarSilencesThatSonarOnly) {
  ko::SimulatedTime time;
  const test::LogCapture log;
  const auto broker = QVBroker::create();
  test::Porter porter(broker);
  sensor::RealSensorManager manager(broker);
  manager.subscribe("me", "Sonar");
  const auto pointsOf = [&](const std::string& sensor) {
    time.advance(milliseconds(200));
    const auto records = manager.getMetricalData(sensor);
    return records.empty() ? 0 : records.at(0).points.size();
  };
  EXPECT_GT(pointsOf("FrontSonar"), 0u);
  for (const auto& [shoulder, elbow, angle] : {std::tuple{"RShoulderPitch", "RElbowRoll", 1.57},
                                               {"LShoulderPitch", "LElbowRoll", -1.57}}) {
    porter.robot.setJointPositions({{shoulder, -1.0}, {elbow, angle}});
    EXPECT_EQ(pointsOf("FrontSonar"), 0u) << shoulder;
    EXPECT_GT(pointsOf("BackSonar"), 0u) << shoulder;
    porter.robot.setJointPositions({{shoulder, 0.0}, {elbow, 0.0}});
    EXPECT_GT(pointsOf("FrontSonar"), 0u) << shoulder;
  }
}

// Stamps are counts of milliseconds modulo 2^32, and scans are read as floats: half a turn of the
// clock away from its zero those are 128 ms apart.
TEST(Porter, itsRangeSensorsStayFreshAtEveryTurnOfTheClock) {
  constexpr std::int64_t kTurn = std::int64_t{1} << 32;
  for (const std::int64_t start : {kTurn / 4 - 2000, kTurn / 2 - 2000, kTurn * 3 / 4 - 2000,
                                   kTurn - 2000, kTurn * 3 / 2 - 2000, 2 * kTurn - 2000}) {
    ko::SimulatedTime time{ko::Clock::time_point(milliseconds(start))};
    const test::LogCapture log;
    const auto broker = QVBroker::create();
    test::Porter porter(broker);
    sensor::RealSensorManager manager(broker);
    const std::set<std::string> families{"Laser", "Sonar", "HoleLaser"};
    manager.subscribe("me", families);
    const auto sensors = manager.getSensorListBySubscriber("me");
    for (int step = 10; step < 50; ++step) {
      // Each has been measured just now.
      time.advanceTo(ko::Clock::time_point(milliseconds(start + 100 * step)));
      std::set<std::string> fresh;
      for (const std::string& sensor : sensors) {
        const auto records = manager.getSensorPtr(sensor)->getData();
        const auto age =
            records.empty() ? ko::Duration::max() : Math::age(records[0], ko::Clock::now());
        if (age > milliseconds(-64) && age < milliseconds(300)) fresh.insert(sensor);
      }
      EXPECT_EQ(fresh, sensors) << start << ", " << step;
    }
    EXPECT_THAT(log.lines(ko::log::Level::warning), ElementsAre()) << start;
  }
}

}  // namespace
}  // namespace QV
