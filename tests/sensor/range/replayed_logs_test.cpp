#include <cmath>
#include <fstream>
#include <sstream>

#include <gmock/gmock.h>

#include "platform/ko/simulated_time.h"
#include "platform/model/model_utils.h"
#include "platform/model/number_text.h"
#include "robot/logs/log_replay.h"
#include "robot/services/device_manager.h"
#include "robot/services/laser_mode_actuator.h"
#include "robot/services/motion_service.h"
#include "sensor/range/laser_sensor.h"
#include "sensor/range/sonar_sensor.h"
#include "tests/support/broker_with_memory.h"
#include "tests/support/real_data.h"

namespace QV::sensor {
namespace {

constexpr float kPi = 3.14159265f;

/** The robot of a recording, whose services play it. */
struct ReplayedRobot {
  explicit ReplayedRobot(const robot::Recording& recording)
      : model(Model::ModelUtils::robotFromXml(recording.toDescription())),
        motion(boost::make_shared<robot::MotionService>(model)),
        replay(recording, broker, motion) {
    broker->registerModule(devices);
    broker->registerModule(motion);
  }

  const Model::SensorConfig& configOf(const std::string& sensor) const {
    return model.sensorConfigs.at(sensor);
  }

  Math::SensorFieldOfView2D fieldOfViewOf(const std::string& sensor) const {
    const auto property = [&](const char* key) {
      return static_cast<float>(Model::atofC(configOf(sensor).properties.at(key)));
    };
    return {property("minimumDetectionDistance"), property("maximumDetectionDistance"),
            property("horizontalAngularRange"), 1};
  }

  /** Waits for the next step and makes it; false at the end. */
  bool step() {
    const auto due = replay.getNextTime();
    if (due && *due > ko::Clock::now()) time.advanceTo(*due);
    return replay.next();
  }

  ko::SimulatedTime time;
  boost::shared_ptr<QVBroker> broker = test::brokerWithMemory();
  boost::shared_ptr<robot::DeviceManager> devices =
      boost::make_shared<robot::DeviceManager>(broker);
  Model::Robot model;
  boost::shared_ptr<robot::MotionService> motion;
  robot::LogReplay replay;
};

/** A scan as the log has it. */
struct LoggedScan {
  std::vector<float> ranges;
  Math::Pose2D laser;
  Math::Pose2D robot;
  double seconds;
};

std::vector<LoggedScan> scansOf(const std::string& path) {
  std::ifstream file(path);
  std::vector<LoggedScan> scans;
  for (std::string text; std::getline(file, text);) {
    std::istringstream line(text);
    std::string message;
    std::size_t count = 0;
    line >> message;
    if (message != "FLASER") continue;
    line >> count;
    LoggedScan scan;
    scan.ranges.resize(count);
    for (float& range : scan.ranges) line >> range;
    for (Math::Pose2D* pose : {&scan.laser, &scan.robot}) line >> pose->x >> pose->y >> pose->theta;
    line >> scan.seconds;
    scans.push_back(scan);
  }
  return scans;
}

void expectPointsOf(const LoggedScan& scan, const std::vector<Math::Position3D>& points) {
  std::size_t next = 0;
  for (std::size_t beam = 0; beam < scan.ranges.size(); ++beam) {
    if (scan.ranges[beam] >= 80.0f) continue;
    ASSERT_LT(next, points.size());
    const float degrees = -90.0f + 0.5f * static_cast<float>(beam);
    const auto expected =
        Math::Position2D::fromPolarCoordinates(scan.ranges[beam], degrees * kPi / 180.0f);
    EXPECT_NEAR(points[next].x, expected.x, 1e-4f);
    EXPECT_NEAR(points[next].y, expected.y, 1e-4f);
    ++next;
  }
  EXPECT_EQ(next, points.size());
}

/** Replays a log and compares each record with its line. */
void replayScans(const std::string& path) {
  const auto scans = scansOf(path);
  ReplayedRobot robot(robot::readLidarLog(path));
  ASSERT_EQ(robot.replay.getStepCount(), scans.size());
  const auto& properties = robot.configOf("Laser").properties;
  const robot::LaserModeActuator mode(robot.broker, robot.devices,
                                      properties.at("setOperationMode"),
                                      properties.at("getOperationMode"), ko::Duration(0));
  LaserSensor sut("Laser", "Laser", robot.fieldOfViewOf("Laser"), robot.broker,
                  robot.configOf("Laser").memoryKeys, 1, properties.at("setOperationMode"),
                  properties.at("getOperationMode"), properties.at("timestamp"));
  sut.subscribe("test");
  for (const LoggedScan& scan : scans) {
    ASSERT_TRUE(robot.step());
    const auto records = sut.getData();
    ASSERT_EQ(records.size(), 1u);
    expectPointsOf(scan, records[0].points);
    const Math::Pose2D laser =
        robot.replay.getPose() * Math::pose2DFromTransform(records[0].sensorTransform);
    EXPECT_NEAR(laser.x, scan.laser.x, 1e-4f);
    EXPECT_NEAR(laser.y, scan.laser.y, 1e-4f);
    EXPECT_NEAR(std::remainder(laser.theta - scan.laser.theta, 2 * kPi), 0.0f, 1e-4f);
    const double milliseconds =
        boost::chrono::duration<double, boost::milli>(records[0].timestamp.time_since_epoch())
            .count();
    EXPECT_NEAR(milliseconds, 1e3 * (scan.seconds - scans[0].seconds) - 50.0, 1.0);
  }
  EXPECT_FALSE(robot.step());
}

TEST(ReplayedLogs, aLaserGivesThePointsOfEachLoggedScan) {
  for (const char* name : {"mrpt_localization_demo.log", "sena_telecom_one_loop.log"}) {
    const auto path = test::findRealData(std::string("lidar/") + name);
    if (!path) GTEST_SKIP() << "no recorded scans";
    SCOPED_TRACE(name);
    replayScans(*path);
  }
}

/** The lines of a file of whole numbers. */
std::vector<std::vector<int>> numbersOf(const std::string& path) {
  std::ifstream file(path);
  std::vector<std::vector<int>> lines;
  for (std::string text; std::getline(file, text);) {
    std::istringstream line(text);
    auto& numbers = lines.emplace_back();
    for (int number = 0; line >> number;) numbers.push_back(number);
  }
  return lines;
}

TEST(ReplayedLogs, sonarsGiveArcsAtTheLoggedRanges) {
  const auto measurements = test::findRealData("sonar/measurement.txt");
  const auto poses = test::findRealData("sonar/poses.txt");
  if (!measurements || !poses) GTEST_SKIP() << "no recorded sonars";
  const float degrees[] = {-90.0f, -37.5f, -22.5f, -7.5f, 7.5f, 22.5f, 37.5f, 90.0f};
  const auto lines = numbersOf(*measurements);
  ReplayedRobot robot(robot::readSonarLog(*measurements, *poses));
  std::vector<boost::shared_ptr<SonarSensor>> sonars;
  for (int i = 0; i < 8; ++i) {
    const std::string name = "Sonar" + std::to_string(i);
    sonars.push_back(boost::make_shared<SonarSensor>(name, "Sonar", robot.fieldOfViewOf(name),
                                                     robot.configOf(name).memoryKeys, robot.broker,
                                                     false));
    sonars.back()->subscribe("test");
  }
  for (const auto& line : lines) {
    ASSERT_TRUE(robot.step());
    for (std::size_t i = 0; i < sonars.size(); ++i) {
      const auto records = sonars[i]->getData();
      ASSERT_EQ(records.size(), 1u);
      EXPECT_EQ(records[0].timestamp.time_since_epoch(),
                boost::chrono::milliseconds(line[0] - lines[0][0]));
      const float range = static_cast<float>(line[i + 1]) / 1000.0f;
      ASSERT_EQ(records[0].points.size(), 15u);
      for (const auto& point : records[0].points) {
        EXPECT_NEAR(Math::norm(point), range, 1e-5f);
        EXPECT_LT(std::abs(std::atan2(point.y, point.x)), kPi / 18.0f);
      }
      const auto place = Math::pose2DFromTransform(records[0].sensorTransform);
      EXPECT_NEAR(place.theta, degrees[i] * kPi / 180.0f, 1e-5f);
    }
  }
  EXPECT_FALSE(robot.step());
}

}  // namespace
}  // namespace QV::sensor
