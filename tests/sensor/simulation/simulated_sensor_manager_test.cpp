#include "sensor/simulation/simulated_sensor_manager.h"

#include <atomic>
#include <cmath>
#include <numbers>
#include <thread>

#include "platform/ko/simulated_time.h"
#include "sensor/simulation/internal/simulated_sensor.h"
#include "tests/support/fake_sensor.h"
#include "tests/support/log_capture.h"
#include "tests/support/vocabulary.h"
#include "tests/support/walled_map.h"

namespace QV::sensor {
namespace {

constexpr float kPi = std::numbers::pi_v<float>;

/** 10 m wide, its inside from 0.1 m to 9.9 m. */
OccupancyMap squareRoom() {
  return test::makeWalledMap(100, 100, 0.1f);
}

void setBothPoses(SensorManager& manager, const Math::Pose2D& pose) {
  manager.setPose2D(pose, pose);
}

TEST(SimulatedSensorManager, theKindDecidesTheKindParameter) {
  test::LogCapture log;
  for (const auto& [kind, expected] :
       {std::pair(-2, 0.3f), {-1, 0.15f}, {0, 0.15f}, {1, 0.3f}, {2, 0.3f}, {7, 0.3f}}) {
    const SimulatedSensorManager sut(kind, nullptr);
    EXPECT_EQ(sut.getKindParameter(), expected) << kind;
    EXPECT_EQ(sut.getSimulationParameter(), 1.0f);
  }
}

TEST(SimulatedSensorManager, withoutAMapReadsRecordsWithoutPoints) {
  test::LogCapture log;
  SimulatedSensorManager sut(1, nullptr);
  sut.subscribe("me");
  const auto records = sut.getMetricalData();
  EXPECT_THAT(records, SizeIs(6));
  for (const auto& record : records) EXPECT_THAT(record.points, IsEmpty()) << record.sensorName;
  EXPECT_THAT(log.lines(), SizeIs(1));
}

TEST(SimulatedSensorManager, aNearestEchoIsOnePointStraightAheadWhateverTheMounting) {
  OccupancyMap map = squareRoom();
  SimulatedSensorManager sut(1, &map);
  sut.subscribe("me", "Sonar");
  setBothPoses(sut, Math::Pose2D(8.5f, 5.0f, 0.0f));
  const auto records = sut.getMetricalData();
  ASSERT_EQ(namesOf(records), (std::vector<std::string>{"Sonar/Back", "Sonar/Front"}));
  for (const auto& record : records) {
    ASSERT_THAT(record.points, SizeIs(1));
    EXPECT_NEAR(record.points[0].x, 1.4f, 1e-5f);
    EXPECT_EQ(record.points[0].y, 0.0f);
    EXPECT_EQ(record.points[0].z, 0.5f);
  }
  // Nothing within 2.5 m that stops a ray: a record, and no point at the maximum range.
  setBothPoses(sut, Math::Pose2D(5.0f, 5.05f, 0.0f));
  map.setOccupancy(60, 50, 0.4f);
  for (const auto& record : sut.getMetricalData()) EXPECT_THAT(record.points, IsEmpty());
  map.setOccupancy(60, 50, std::nextafter(0.4f, 1.0f));
  for (const auto& record : sut.getMetricalData()) {
    ASSERT_THAT(record.points, SizeIs(1));
    EXPECT_NEAR(record.points[0].x, 1.0f, 1e-5f);
  }
}

TEST(SimulatedSensor, ofEqualRangesTheFirstSaysWhetherThereIsAnEcho) {
  OccupancyMap map(40, 9, 0.125f, {}, 0.0f);
  for (int row = 0; row < 9; ++row) map.setOccupancy(36, row, 1.0f);
  SimulatedSensor sut("Front", "Sonar", {0.0f, 2.5f, 1.0f, 2}, {});
  sut.setOccMap(&map);
  sut.subscribe("me");
  // The first ray meets the wall at the maximum range, at which the second one ends without.
  sut.setPose2D({2.0f, 0.5625f, 0.5f}, {});
  EXPECT_THAT(sut.getData().at(0).points, ElementsAre(Math::Position3D(2.5f, 0.0f, 0.5f)));
  sut.setPose2D({2.0f, 0.5625f, -0.5f}, {});
  EXPECT_THAT(sut.getData().at(0).points, IsEmpty());
}

TEST(SimulatedSensorManager, allRaysArePlacedFromTheScanPoseIntoTheReferenceFrame) {
  OccupancyMap map = squareRoom();
  SimulatedSensorManager sut(-1, &map);
  sut.subscribe("me");
  const Math::Pose2D pose(9.0f, 5.0f, kPi / 2);
  setBothPoses(sut, pose);
  const auto robotFrame = sut.getMetricalData().at(0);
  ASSERT_THAT(robotFrame.points, SizeIs(300));
  // The first ray looks back, at the middle of the room: a miss at 3.5 m. The wall is to the right.
  EXPECT_NEAR(robotFrame.points[0].x, -3.5f, 1e-4f);
  EXPECT_NEAR(robotFrame.points[75].y, -0.9f, 1e-4f);
  for (const auto& point : robotFrame.points) EXPECT_EQ(point.z, 0.5f);

  const Math::Pose2D reference(2.0f, -3.0f, 0.7f);
  sut.setPose2D(pose, reference);
  const auto shifted = sut.getMetricalData().at(0);
  EXPECT_NEAR(robotFrame.sensorTransform(0, 3), 9.0f, 1e-6f);
  EXPECT_NEAR(robotFrame.sensorTransform(1, 3), 5.1f, 1e-6f);
  EXPECT_EQ(shifted.sensorTransform,
            Math::transformFromPose2D(reference * Math::Pose2D(0.1f, 0.0f, 0.0f)));
  const auto expected = reference * (Math::pinv(pose) * Math::Position2D(robotFrame.points[75].x,
                                                                         robotFrame.points[75].y));
  EXPECT_NEAR(shifted.points[75].x, expected.x, 1e-4f);
  EXPECT_NEAR(shifted.points[75].y, expected.y, 1e-4f);
}

/** Lets a test slip a sensor in that is not simulated, or none. */
struct MixedManager : SimulatedSensorManager {
  MixedManager(OccupancyMap* map, const boost::shared_ptr<Sensor>& radar)
      : SimulatedSensorManager(1, map) {
    sensors["Radar"] = radar;
  }
};

TEST(SimulatedSensorManager, posesReachTheSensorsInOrderOfNameUpToOneThatIsNotSimulated) {
  const boost::shared_ptr<Sensor> radars[] = {
      boost::make_shared<test::FakeSensor>("Radar", "Radar"), nullptr};
  for (const auto& radar : radars) {
    OccupancyMap map = squareRoom();
    test::LogCapture log;
    MixedManager sut(&map, radar);
    sut.subscribe("me");
    setBothPoses(sut, Math::Pose2D(3.0f, 5.0f, 0.0f));
    const auto records = sut.getMetricalData();
    ASSERT_THAT(records, SizeIs(6));
    for (const auto& record : records) {
      const bool reached = record.sensorName < "Radar";
      EXPECT_EQ(record.sensorTransform(0, 3), reached ? 3.0f : 0.0f) << record.sensorName;
    }
    EXPECT_THAT(
        log.lines(),
        testing::Contains("fatal Navigation.SimulatedSensorManager.setPose2D: Wrong sensor cast."));
  }
}

TEST(SimulatedSensorManager, posesMayBeSetWhileOthersRead) {
  OccupancyMap map = squareRoom();
  SimulatedSensorManager sut(1, &map);
  sut.subscribe("me");
  setBothPoses(sut, Math::Pose2D(8.0f, 5.0f, 0.0f));
  std::atomic<bool> done{false};
  std::thread writer([&] {
    for (int i = 0; !done; ++i) {
      setBothPoses(sut, Math::Pose2D(8.0f + 0.002f * static_cast<float>(i % 500), 5.0f, 0.0f));
    }
  });
  int torn = 0;
  for (int i = 0; i < 1000; ++i) {
    const auto record = sut.getMetricalData("Sonar/Front").at(0);
    // The echo comes from the one pose, the transform from the other.
    const float wall = record.points.at(0).x + record.sensorTransform(0, 3);
    if (std::abs(wall - 9.9f) > 1e-4f) ++torn;
  }
  done = true;
  writer.join();
  EXPECT_EQ(torn, 0);
}

TEST(SimulatedSensorManager, givesHealthAtTheFirstQuestion) {
  ko::SimulatedTime time;
  OccupancyMap map = squareRoom();
  SimulatedSensorManager sut(1, &map);
  const auto readFor = [&](int cycles) {
    for (; cycles > 0; --cycles) {
      time.advance(boost::chrono::milliseconds(100));
      sut.getMetricalData();
    }
  };
  sut.subscribe("me");
  readFor(50);
  for (const auto& [name, health] : sut.getHealth()) {
    EXPECT_EQ(health.reason, "its records are fresh") << name;
  }
  std::vector<std::string> told;
  sut.onHealthChanged([&](const std::string& sensor, const SensorHealth& health) {
    told.push_back(sensor + " " + getName(health.state));
  });
  sut.setSensorDiagnosis("Sonar/Front", false);
  readFor(4);
  EXPECT_THAT(told, ElementsAre("Sonar/Front failing"));
}

}  // namespace
}  // namespace QV::sensor
