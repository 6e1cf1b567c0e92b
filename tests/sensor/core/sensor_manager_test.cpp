#include "sensor/core/sensor_manager.h"

#include <stdexcept>

#include <gmock/gmock.h>

#include "tests/support/fake_sensor.h"
#include "tests/support/log_capture.h"

namespace QV::sensor {
namespace {

using test::namesOf;
using testing::ElementsAre;
using testing::IsEmpty;

typedef std::set<std::string> Names;

/** Two sonars, and a touch sensor that shares its name with its family. */
class SensorManagerTest : public testing::Test {
 protected:
  SensorManagerTest() {
    left = sut.add("Left", "Sonar");
    right = sut.add("Right", "Sonar");
    touch = sut.add("Touch", "Touch");
  }

  test::LogCapture log;
  test::FakeManager sut;
  boost::shared_ptr<test::FakeSensor> left;
  boost::shared_ptr<test::FakeSensor> right;
  boost::shared_ptr<test::FakeSensor> touch;
};

TEST_F(SensorManagerTest, anUnknownNameWipesOutTheSuccessOfTheNamesBeforeItOnly) {
  struct Case {
    Names names;
    bool expected;
  };
  const Case cases[] = {
      {{"Sonar", "Zebra"}, false},
      {{"Aardvark", "Sonar"}, true},
      {{"Left", "Nobody", "Right"}, true},
      {{"Zebra"}, false},
      {{}, false},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(sut.subscribe("me", c.names), c.expected) << testing::PrintToString(c.names);
    EXPECT_EQ(left->isStarted(), c.names.count("Sonar") + c.names.count("Left") > 0);
    EXPECT_EQ(sut.unsubscribe("me", c.names), c.expected) << testing::PrintToString(c.names);
    EXPECT_FALSE(left->isStarted());
  }
}

TEST_F(SensorManagerTest, everySubscriptionChangeTellsWhetherAnySensorRuns) {
  sut.subscribe("me", {});
  sut.subscribe("me", "Left");
  sut.subscribe("you", "Touch");
  sut.unsubscribe("me", "Left");
  sut.unsubscribe("you");
  EXPECT_THAT(sut.anySensorOn, ElementsAre(false, true, true, true, false));
}

TEST_F(SensorManagerTest, enablingAndDiagnosisDoNotTell) {
  sut.subscribe("me");
  sut.anySensorOn.clear();
  EXPECT_TRUE(sut.enableSensorOrFamily("Sonar", false));
  EXPECT_TRUE(sut.setSensorDiagnosis("Touch", false));
  EXPECT_FALSE(sut.isSensorStarted("Left") || sut.isSensorStarted("Right") ||
               sut.isSensorStarted("Touch"));
  EXPECT_THAT(sut.anySensorOn, IsEmpty());
}

TEST_F(SensorManagerTest, aSubscriberHoldsASensorOnceByFamilyAndByName) {
  EXPECT_TRUE(sut.subscribe("me", {"Left", "Sonar"}));
  EXPECT_FALSE(sut.subscribe("me", "Left"));
  EXPECT_EQ(left->starts, 1);
  EXPECT_TRUE(sut.unsubscribe("me", "Left"));
  EXPECT_FALSE(left->isStarted());
  EXPECT_TRUE(right->isStarted());
}

TEST_F(SensorManagerTest, subscribingToEverythingMeansEveryFamily) {
  EXPECT_TRUE(sut.subscribe("me"));
  EXPECT_THAT(sut.getSensorListBySubscriber("me"), ElementsAre("Left", "Right", "Touch"));
  EXPECT_TRUE(sut.unsubscribe("me"));
  EXPECT_THAT(sut.getSubscribers(), IsEmpty());

  test::FakeManager empty;
  EXPECT_FALSE(empty.subscribe("me"));
}

TEST_F(SensorManagerTest, badNamesAreLoggedAndAnswered) {
  sut.addFamilyMember("Ghosts", "Casper");
  EXPECT_FALSE(sut.subscribe("me", "Nobody"));
  EXPECT_FALSE(sut.unsubscribe("me", "Nobody"));
  EXPECT_FALSE(sut.subscribe("me", "Ghosts"));
  EXPECT_FALSE(sut.unsubscribe("me", "Ghosts"));
  EXPECT_FALSE(sut.xSubscribeToFamily("me", "No"));
  EXPECT_FALSE(sut.xUnsubscribeFromFamily("me", "No"));
  EXPECT_FALSE(sut.enableSensorOrFamily("Nobody", true));
  EXPECT_FALSE(sut.enableSensorOrFamily("Ghosts", true));
  EXPECT_THAT(sut.getSensorsByFamily("Radar"), IsEmpty());
  EXPECT_FALSE(sut.getSensorPtr("Nobody"));
  sut.setPose2D(Math::Pose2D(), Math::Pose2D());
  const std::string m = "Navigation.SensorManager.";
  EXPECT_THAT(
      log.lines(),
      ElementsAre(
          "warning " + m + "subscribe: Invalid subscription name \"Nobody\" from \"me\"",
          "warning " + m + "unsubscribe: Invalid unsubscription name \"Nobody\" from \"me\"",
          "error " + m + "xSubscribeToSensor: Cannot find sensor \"Casper\"",
          "error " + m + "xUnsubscribeFromSensor: Cannot find sensor \"Casper\"",
          "error " + m + "xSubscribeToFamily: Cannot find family \"No\"",
          "error " + m + "xUnsubscribeFromFamily: Cannot find family \"No\"",
          "warning " + m + "enableSensorOrFamily: Invalid name in enableSensorOrFamily: \"Nobody\"",
          "error " + m + "getSensorsByFamily: Wrong family asked Radar",
          "info " + m + "getSensorPtr: Unable to find Nobody",
          "warning " + m + "setPose2D: setPose2D not implemented."));
}

TEST_F(SensorManagerTest, questionsAboutUnknownSensorsAreAnsweredQuietly) {
  EXPECT_FALSE(sut.isSensorStarted("No") || sut.isSensorEnabled("No") ||
               sut.isSensorDiagnosisSuccess("No") || sut.setSensorDiagnosis("No", true) ||
               sut.isSensorSubscribedBy("No", "me") || sut.isSensor("No") || sut.isFamily("No"));
  EXPECT_THAT(log.lines(), IsEmpty());
}

TEST_F(SensorManagerTest, listsItsSensors) {
  EXPECT_THAT(sut.getFamilyNames(), ElementsAre("Sonar", "Touch"));
  EXPECT_THAT(sut.getSensorList(), ElementsAre("Left", "Right", "Touch"));
  EXPECT_THAT(sut.getSensorsByFamily("Sonar"), ElementsAre("Left", "Right"));
  EXPECT_EQ(sut.getAllSensorsByFamily().at("Touch"), Names{"Touch"});
  EXPECT_EQ(sut.getSensorPtr("Left"), left);
  EXPECT_TRUE(sut.isSensor("Touch") && sut.isFamily("Touch") && !sut.isFamily("Left"));

  right->setDiagnosis(false);
  touch->enable(false);
  EXPECT_THAT(sut.getEnabledSensorList(), ElementsAre("Left"));
}

TEST_F(SensorManagerTest, readsByFamilyAndByNameOncePerName) {
  sut.subscribe("me");
  EXPECT_THAT(namesOf(sut.getMetricalData()), ElementsAre("Left", "Right", "Touch"));
  EXPECT_THAT(namesOf(sut.getMetricalData("Sonar")), ElementsAre("Left", "Right"));
  sut.questions = 0;
  EXPECT_THAT(namesOf(sut.getMetricalData({"Sonar", "Left", "Touch", "None"})),
              ElementsAre("Left", "Left", "Right", "Touch"));
  EXPECT_EQ(sut.questions, 4);
  EXPECT_THAT(sut.getMetricalData(Names{}), IsEmpty());
}

TEST_F(SensorManagerTest, aSensorThatThrowsIsLeftOutAndLoggedOncePerFailure) {
  left->onRead = [] { throw std::runtime_error("no echo"); };
  sut.subscribe("me");
  EXPECT_THAT(namesOf(sut.getMetricalData()), ElementsAre("Right", "Touch"));
  EXPECT_THAT(namesOf(sut.getMetricalData()), ElementsAre("Right", "Touch"));
  const std::string line =
      "error Navigation.SensorManager.xUpdateData: Unable to gather the data of Left: no echo";
  EXPECT_THAT(log.lines(), ElementsAre(line));

  left->onRead = [] {};
  EXPECT_EQ(sut.getMetricalData().size(), 3u);
  left->onRead = [] { throw std::runtime_error("no echo"); };
  sut.getMetricalData();
  EXPECT_THAT(log.lines(), ElementsAre(line, line));
}

TEST_F(SensorManagerTest, whatStartingThrowsPassesThroughAndReleasesTheLock) {
  left->onStart = [] { throw std::runtime_error("no power"); };
  EXPECT_THROW(sut.subscribe("me", "Sonar"), std::runtime_error);
  EXPECT_TRUE(sut.subscribe("me", "Touch"));
}

}  // namespace
}  // namespace QV::sensor
