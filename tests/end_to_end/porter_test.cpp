#include "tests/support/porter.h"

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

}  // namespace
}  // namespace QV
