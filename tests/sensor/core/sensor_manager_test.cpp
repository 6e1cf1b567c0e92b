#include "sensor/core/sensor_manager.h"

#include <stdexcept>

#include "tests/support/fake_sensor.h"
#include "tests/support/log_capture.h"
#include "tests/support/vocabulary.h"

namespace QV::sensor {
namespace {

/** Two sonars and a touch sensor. */
struct SensorManagerTest : testing::Test {
  SensorManagerTest() {
    sut.add("Right", "Sonar");
    sut.add("Touch", "Touch");
  }

  test::LogCapture log;
  test::FakeManager sut;
  const boost::shared_ptr<test::FakeSensor> left = sut.add("Left", "Sonar");
};

TEST_F(SensorManagerTest, subscribingAndLookAgainReportWhetherAnySensorRuns) {
  sut.lookAgain();
  sut.subscribe("me", "Left");
  sut.subscribe("you", "Touch");
  EXPECT_TRUE(sut.enableSensorOrFamily("Sonar", false));
  sut.setSensorDiagnosis("Touch", false);
  sut.setSensorDiagnosis("Touch", true);
  sut.unsubscribe("me", "Left");
  sut.unsubscribe("you");
  EXPECT_THAT(sut.anySensorOn, ElementsAre(false, true, true, true, false));
}

TEST_F(SensorManagerTest, missingFamilyMembersAreLoggedAndAnsweredWithFalse) {
  sut.addFamilyMember("Ghosts", "Casper");
  EXPECT_FALSE(sut.subscribe("me", "Ghosts") || sut.unsubscribe("me", "Ghosts"));
  EXPECT_FALSE(sut.xSubscribeToFamily("me", "No") || sut.xUnsubscribeFromFamily("me", "No"));
  EXPECT_FALSE(sut.enableSensorOrFamily("Ghosts", true));
  sut.setPose2D(Math::Pose2D(), Math::Pose2D());
  const std::string m = "Navigation.SensorManager.";
  EXPECT_THAT(log.lines(),
              ElementsAre("error " + m + "xSubscribeToSensor: Cannot find sensor \"Casper\"",
                          "error " + m + "xUnsubscribeFromSensor: Cannot find sensor \"Casper\"",
                          "error " + m + "xSubscribeToFamily: Cannot find family \"No\"",
                          "error " + m + "xUnsubscribeFromFamily: Cannot find family \"No\"",
                          "warning " + m + "setPose2D: setPose2D not implemented."));
}

TEST_F(SensorManagerTest, aSensorThatThrowsIsLeftOutAndLoggedOncePerFailure) {
  left->onRead = [] { throw std::runtime_error("no echo"); };
  sut.subscribe("me");
  EXPECT_THAT(namesOf(sut.getMetricalData()), ElementsAre("Right", "Touch"));
  EXPECT_THAT(namesOf(sut.getMetricalData()), ElementsAre("Right", "Touch"));
  const std::string line =
      "error Navigation.SensorManager.xUpdateData: Unable to gather the data of Left: no echo";
  EXPECT_THAT(log.lines(), ElementsAre(line));
  EXPECT_THAT(line, testing::EndsWith(sut.getLastTrouble("Left").value().message));
  EXPECT_FALSE(sut.getLastTrouble("Right") || sut.getLastTrouble("No"));

  left->onRead = [] {};
  EXPECT_EQ(sut.getMetricalData().size(), 3u);
  left->onRead = [] { throw 42; };
  EXPECT_THAT(namesOf(sut.getMetricalData()), ElementsAre("Right", "Touch"));
  sut.getMetricalData();
  EXPECT_THAT(log.lines(),
              ElementsAre(line, line.substr(0, line.find("no echo")) + "not a standard exception"));
}

}  // namespace
}  // namespace QV::sensor
