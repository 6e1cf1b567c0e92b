#include "sensor/simulation/internal/robot_model_mock.h"

#include "tests/support/log_capture.h"
#include "tests/support/vocabulary.h"

namespace QV::sensor {
namespace {

/** Reads what a sensor reports of itself by letting it measure where every ray is stopped. */
Math::MetricalData recordOf(const boost::shared_ptr<SimulatedSensor>& sensor) {
  static OccupancyMap solid(1, 1, 1.0f, {}, 1.0f);
  sensor->setOccMap(&solid);
  sensor->subscribe("test");
  return sensor->getData().at(0);
}

struct Expected {
  std::string name;
  std::string family;
  Math::SensorFieldOfView2D fieldOfView;
  Math::Pose2D pose;
  std::size_t points = 1;
};

void expectSensors(int kind, const std::vector<Expected>& expected) {
  const auto sensors = RobotModelMock().getSimulatedSensors(kind);
  ASSERT_EQ(sensors.size(), expected.size());
  for (std::size_t i = 0; i < sensors.size(); ++i) {
    const auto record = recordOf(sensors[i]);
    EXPECT_EQ(record.sensorName, expected[i].name);
    EXPECT_EQ(record.familyName, expected[i].family) << record.sensorName;
    EXPECT_EQ(record.fieldOfView, expected[i].fieldOfView) << record.sensorName;
    EXPECT_EQ(record.sensorTransform, Math::transformFromPose2D(expected[i].pose))
        << record.sensorName;
    EXPECT_EQ(record.points.size(), expected[i].points) << record.sensorName;
  }
}

TEST(RobotModelMock, buildsTheSensorsOfEachSimulatedKind) {
  const Math::SensorFieldOfView2D turn(0.0f, 3.5f, 6.2831855f, 300);
  expectSensors(-1, {{"Laser", "Laser", turn, {0.1f, 0.0f, 0.0f}, 300}});

  const Math::SensorFieldOfView2D sonar(0.3f, 2.0f, 1.0f, 20);
  expectSensors(0, {{"RightSonar", "Sonar", sonar, {}}, {"LeftSonar", "Sonar", sonar, {}}});

  const Math::SensorFieldOfView2D bumper(0.15f, 0.16f, 0.6f, 20);
  const Math::SensorFieldOfView2D wideSonar(0.3f, 2.5f, 1.05f, 5);
  expectSensors(1, {{"Bumper/FrontRight", "Bumper", bumper, {0, 0, -0.7853982f}},
                    {"Bumper/Back", "Bumper", bumper, {0, 0, 3.1415927f}},
                    {"Bumper/FrontLeft", "Bumper", bumper, {0, 0, 0.7853982f}},
                    {"Sonar/Back", "Sonar", wideSonar, {0, 0, 3.1415927f}},
                    {"Sonar/Front", "Sonar", wideSonar, {}},
                    {"CameraDepth", "Asus", {0.5f, 8.0f, 1.0f, 100}, {}, 100}});
}

TEST(RobotModelMock, logsTheSetsThatItLoadsOrCantLoad) {
  test::LogCapture log;
  const RobotModelMock sut;
  for (int kind : {-1, 0, 1, 2, 7}) sut.getSimulatedSensors(kind);
  EXPECT_THAT(
      log.lines(),
      ElementsAre("info RobotModelMock.xGetSimulatedSensorsX: Loading perfect Simulated Sensors ",
                  "info RobotModelMock.xGetSimulatedSensors1: Loading Tovo Simulated Sensors ",
                  "info RobotModelMock.xGetSimulatedSensorsDVT2: Loading V. Simulated Sensors ",
                  "error RobotModelMock.getSimulatedSensors: Garrik Sensors not implemented",
                  "error RobotModelMock.getSimulatedSensors: Sensors : unknown robot"));
  EXPECT_THAT(sut.getSimulatedSensors(2), IsEmpty());
  EXPECT_THAT(sut.getSimulatedSensors(7), IsEmpty());
}

}  // namespace
}  // namespace QV::sensor
