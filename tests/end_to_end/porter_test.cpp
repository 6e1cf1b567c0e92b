#include <fstream>
#include <iterator>

#include "apps/shared_files.h"
#include "platform/model/model_utils.h"
#include "robot/services/motion_service.h"
#include "robot/services/robot_model_service.h"
#include "robot/services/sonar_driver.h"
#include "robot/services/video_device.h"
#include "sensor/real/real_sensor_manager.h"
#include "tests/support/broker_with_memory.h"
#include "tests/support/fake_robot.h"

namespace QV {
namespace {

using boost::chrono::milliseconds;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

std::string readFile(const std::string& path) {
  std::ifstream file(path);
  return std::string(std::istreambuf_iterator<char>(file), {});
}

/** The project's own robot, its services in this process, with an echo at 1.5 m for each sonar. */
class PorterTest : public testing::Test {
 protected:
  PorterTest() {
    sonars->setSource([](const std::string&) { return 1.5f; });
    video->addCamera({2, "camera", 1, 1.02f, 0.79f,
                      [](cv::Mat_<std::uint16_t>& depth, ko::Clock::time_point) { depth = 2000; }});
    broker->registerModule(boost::make_shared<robot::DeviceManager>(broker));
    broker->registerModule(boost::make_shared<robot::RobotModelService>(description));
    broker->registerModule(motion);
    broker->registerModule(sonars);
    broker->registerModule(video);
  }

  std::size_t pointsOf(const std::string& sensor) {
    time.advance(milliseconds(200));
    const auto records = manager->getMetricalData(sensor);
    return records.empty() ? 0 : records.at(0).points.size();
  }

  ko::SimulatedTime time;
  test::LogCapture log;
  const std::string description = readFile(app::findSharedFile("descriptions/porter.urdf"));
  const Model::Robot model = Model::ModelUtils::robotFromXml(description);
  boost::shared_ptr<QVBroker> broker = test::brokerWithMemory();
  boost::shared_ptr<robot::MotionService> motion = boost::make_shared<robot::MotionService>(model);
  boost::shared_ptr<robot::SonarDriver> sonars =
      boost::make_shared<robot::SonarDriver>(broker, model);
  boost::shared_ptr<robot::VideoDevice> video = boost::make_shared<robot::VideoDevice>();
  std::optional<sensor::RealSensorManager> manager;
};

TEST_F(PorterTest, hasEverySensorItsDescriptionNames) {
  manager.emplace(broker);
  EXPECT_THAT(
      manager->getSensorList(),
      ElementsAre("BackSonar", "BlindZone", "DepthCamera", "FrontLaser", "FrontSonar", "HoleLaser",
                  "LeftLaser", "PeoplePerception", "RightLaser", "ShovelLaser", "Touch"));
  for (const auto& record : log.records()) EXPECT_GT(record.level, ko::log::Level::warning);
}

TEST_F(PorterTest, anArmBeforeTheFrontSonarSilencesThatSonarOnly) {
  manager.emplace(broker);
  manager->subscribe("me", "Sonar");
  EXPECT_GT(pointsOf("FrontSonar"), 0u);
  for (const auto& [shoulder, elbow, angle] : {std::tuple{"RShoulderPitch", "RElbowRoll", 1.57},
                                               {"LShoulderPitch", "LElbowRoll", -1.57}}) {
    motion->setJointPositions({{shoulder, -1.0}, {elbow, angle}});
    EXPECT_EQ(pointsOf("FrontSonar"), 0u) << shoulder;
    EXPECT_GT(pointsOf("BackSonar"), 0u) << shoulder;
    motion->setJointPositions({{shoulder, 0.0}, {elbow, 0.0}});
    EXPECT_GT(pointsOf("FrontSonar"), 0u) << shoulder;
  }
}

TEST_F(PorterTest, itsCameraRunsWhileSomebodyIsSubscribed) {
  manager.emplace(broker);
  manager->subscribe("me", "DepthCamera");
  EXPECT_EQ(pointsOf("DepthCamera"), 320u * 240u);
  EXPECT_THAT(video->getHandles(), SizeIs(1));
  manager->unsubscribe("me");
  EXPECT_THAT(video->getHandles(), IsEmpty());
}

}  // namespace
}  // namespace QV
