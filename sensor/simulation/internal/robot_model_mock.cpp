#include "sensor/simulation/internal/robot_model_mock.h"

#include <numbers>

#include <boost/make_shared.hpp>

#include "platform/ko/log.h"

namespace QV::sensor {
namespace {

constexpr char kMockCategory[] = "RobotModelMock";
constexpr float kPi = std::numbers::pi_v<float>;

using SimulatedSensors = std::vector<boost::shared_ptr<SimulatedSensor>>;

Math::SensorFieldOfView2D fieldOfView(float minRange, float maxRange, float angularRange,
                                      int rayCount) {
  return {minRange, maxRange, angularRange, rayCount};
}

}  // namespace

// The interface has these texts of the log, and the names of the functions for kinds.
SimulatedSensors RobotModelMock::getSimulatedSensors(int robotKind) const {
  switch (robotKind) {
    case -1:
      return xGetSimulatedSensorsX();
    case 0:
      return xGetSimulatedSensors1();
    case 1:
      return xGetSimulatedSensorsDVT2();
    case 2:
      ko::log::error(kMockCategory, "getSimulatedSensors") << "Garrik Sensors not implemented";
      return {};
    default:
      ko::log::error(kMockCategory, "getSimulatedSensors") << "Sensors : unknown robot";
      return {};
  }
}

SimulatedSensors RobotModelMock::xGetSimulatedSensorsX() const {
  ko::log::info(kMockCategory, "xGetSimulatedSensorsX") << "Loading perfect Simulated Sensors ";
  return {boost::make_shared<SimulatedSensor>("Laser", "Laser",
                                              fieldOfView(0.0f, 3.5f, 2.0f * kPi, 300),
                                              Math::Pose2D(0.1f, 0.0f, 0.0f), true)};
}

SimulatedSensors RobotModelMock::xGetSimulatedSensors1() const {
  ko::log::info(kMockCategory, "xGetSimulatedSensors1") << "Loading Tovo Simulated Sensors ";
  const auto sonar = [](const char* name) {
    return boost::make_shared<SimulatedSensor>(name, "Sonar", fieldOfView(0.3f, 2.0f, 1.0f, 20),
                                               Math::Pose2D(0.0f, 0.0f, 0.0f));
  };
  return {sonar("RightSonar"), sonar("LeftSonar")};
}

SimulatedSensors RobotModelMock::xGetSimulatedSensorsDVT2() const {
  ko::log::info(kMockCategory, "xGetSimulatedSensorsDVT2") << "Loading V. Simulated Sensors ";
  const auto bumper = [](const char* name, float heading) {
    return boost::make_shared<SimulatedSensor>(name, "Bumper", fieldOfView(0.15f, 0.16f, 0.6f, 20),
                                               Math::Pose2D(0.0f, 0.0f, heading));
  };
  const auto sonar = [](const char* name, float heading) {
    return boost::make_shared<SimulatedSensor>(name, "Sonar", fieldOfView(0.3f, 2.5f, 1.05f, 5),
                                               Math::Pose2D(0.0f, 0.0f, heading));
  };
  return {
      bumper("Bumper/FrontRight", -kPi / 4.0f),
      bumper("Bumper/Back", kPi),
      bumper("Bumper/FrontLeft", kPi / 4.0f),
      sonar("Sonar/Back", kPi),
      sonar("Sonar/Front", 0.0f),
      boost::make_shared<SimulatedSensor>("CameraDepth", "Asus", fieldOfView(0.5f, 8.0f, 1.0f, 100),
                                          Math::Pose2D(0.0f, 0.0f, 0.0f), true)};
}

}  // namespace QV::sensor
