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

typedef std::vector<std::string> Words;

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
    if (due) time.advanceTo(*due);
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
  ReplayedRobot robot(robot::readLidarLog(path));
  const auto& config = robot.configOf("Laser");
  const std::string set = config.properties.at("setOperationMode");
  const std::string get = config.properties.at("getOperationMode");
  const robot::LaserModeActuator mode(robot.broker, robot.devices, set, get, ko::Duration(0));
  LaserSensor sut("Laser", "Laser", robot.fieldOfViewOf("Laser"), robot.broker, config.memoryKeys,
                  1, set, get, config.properties.at("timestamp"));
  sut.subscribe("test");
  for (const Words& scan : scans) {
    ASSERT_TRUE(robot.step());
    const auto records = sut.getData();
    ASSERT_EQ(records.size(), 1u);
    expectPointsOf(scan, records[0].points);
    const auto laser =
        robot.replay.getPose() * Math::pose2DFromTransform(records[0].sensorTransform);
    EXPECT_NEAR(laser.x, std::stof(scan[363]), 1e-4f);
    EXPECT_NEAR(laser.y, std::stof(scan[364]), 1e-4f);
    EXPECT_NEAR(std::remainder(laser.theta - std::stof(scan[365]), 2 * kPi), 0.0f, 1e-4f);
    const ko::Duration time = records[0].timestamp.time_since_epoch();
    const double elapsed = std::stod(scan[369]) - std::stod(scans[0][369]);
    EXPECT_NEAR(static_cast<double>(time.count()) * 1e-9, elapsed - 0.05, 1e-3);
  }
  EXPECT_FALSE(robot.step());
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
  ReplayedRobot robot(robot::readSonarLog(*measurements, *poses));
  std::vector<boost::shared_ptr<SonarSensor>> sonars;
  for (int i = 0; i < 8; ++i) {
    const std::string name = "Sonar" + std::to_string(i);
    sonars.push_back(boost::make_shared<SonarSensor>(name, "Sonar", robot.fieldOfViewOf(name),
                                                     robot.configOf(name).memoryKeys, robot.broker,
                                                     false));
    sonars.back()->subscribe("test");
  }
  for (std::size_t step = 0; step < lines.size(); ++step) {
    const Words& line = lines[step];
    ASSERT_TRUE(robot.step());
    EXPECT_NEAR(robot.replay.getPose().x, std::stof(places[step][1]) * 1e-3f, 1e-4f);
    EXPECT_NEAR(robot.replay.getPose().y, std::stof(places[step][2]) * 1e-3f, 1e-4f);
    for (std::size_t i = 0; i < sonars.size(); ++i) {
      const auto records = sonars[i]->getData();
      ASSERT_EQ(records.size(), 1u);
      EXPECT_EQ(records[0].timestamp.time_since_epoch(),
                boost::chrono::milliseconds(std::stoi(line[0]) - std::stoi(lines[0][0])));
      ASSERT_EQ(records[0].points.size(), 15u);
      for (const auto& point : records[0].points) {
        EXPECT_NEAR(1000.0f * Math::norm(point), std::stof(line[i + 1]), 1e-2f);
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
