#include <functional>
#include <latch>
#include <memory>
#include <thread>

#include "platform/ko/simulated_time.h"
#include "sensor/real/real_sensor_manager.h"
#include "sensor/simulation/simulated_sensor_manager.h"
#include "tests/support/fake_sensor.h"
#include "tests/support/log_capture.h"
#include "tests/support/porter.h"
#include "tests/support/vocabulary.h"

namespace QV::sensor {
namespace {

using testing::IsSubsetOf;

using Names = std::set<std::string>;
using List = std::vector<std::string>;

/** A manager, with two sensors in the family "Sonar" and some in "Asus" that all have records. */
struct World {
  virtual ~World() = default;
  virtual SensorManager& getManager() = 0;
  /** Afterwards whatever is started has been measured. */
  virtual void passTime() = 0;
};

class SimulatedWorld : public World {
 public:
  SensorManager& getManager() override { return manager; }
  void passTime() override {}

 private:
  OccupancyMap map{40, 40, 0.1f, Math::Pose2D(), 0.0f};
  SimulatedSensorManager manager{1, &map};
};

class RealWorld : public World {
 public:
  SensorManager& getManager() override { return manager; }
  void passTime() override { time.advance(boost::chrono::milliseconds(200)); }

 private:
  ko::SimulatedTime time;
  boost::shared_ptr<QVBroker> broker = QVBroker::create();
  test::Porter porter{broker};
  RealSensorManager manager{broker};
};

struct Implementation {
  std::string name;
  std::function<std::unique_ptr<World>()> make;

  friend void PrintTo(const Implementation& self, std::ostream* stream) { *stream << self.name; }
};

struct SensorManagerConformance : testing::TestWithParam<Implementation> {
  List readNames(const Names& names) {
    world->passTime();
    return namesOf(sut.getMetricalData(names));
  }

  test::LogCapture log;
  const std::unique_ptr<World> world = GetParam().make();
  SensorManager& sut = world->getManager();
  const Names sonars = sut.getSensorsByFamily("Sonar");
  const std::string sonar = *sonars.begin();
};

INSTANTIATE_TEST_SUITE_P(
    , SensorManagerConformance,
    testing::Values(Implementation{"simulated", [] { return std::make_unique<SimulatedWorld>(); }},
                    Implementation{"real", [] { return std::make_unique<RealWorld>(); }}),
    [](const auto& instance) { return instance.param.name; });

TEST_P(SensorManagerConformance, everySensorIsInAFamilyAndKnownByItsName) {
  Names members;
  for (const auto& [family, names] : sut.getAllSensorsByFamily()) {
    EXPECT_TRUE(sut.isFamily(family));
    EXPECT_EQ(sut.getSensorsByFamily(family), names);
    for (const auto& name : names) EXPECT_EQ(sut.getSensorPtr(name)->getFamilyName(), family);
    members.insert(names.begin(), names.end());
  }
  EXPECT_EQ(sut.getSensorList(), members);
  for (const auto& name : members) {
    EXPECT_TRUE(sut.isSensor(name));
    EXPECT_EQ(sut.getSensorPtr(name)->getName(), name);
  }
  EXPECT_THAT((Names{"Asus", "Sonar"}), IsSubsetOf(sut.getFamilyNames()));
  EXPECT_EQ(sonars.size(), 2u);
}

TEST_P(SensorManagerConformance, startsASensorForItsFirstSubscriberAndStopsItAfterTheLast) {
  EXPECT_THAT(readNames(sonars), IsEmpty());
  EXPECT_TRUE(sut.subscribe("me", sonar));
  EXPECT_FALSE(sut.subscribe("me", sonar));
  EXPECT_TRUE(sut.subscribe("you", sonar));
  EXPECT_EQ(sut.getSubscribers(), (Names{"me", "you"}));
  EXPECT_TRUE(sut.unsubscribe("me", sonar));
  EXPECT_FALSE(sut.unsubscribe("me", sonar));
  EXPECT_FALSE(sut.isSensorSubscribedBy(sonar, "me"));
  EXPECT_TRUE(sut.isSensorSubscribedBy(sonar, "you") && sut.isSensorStarted(sonar));
  EXPECT_THAT(readNames(sonars), ElementsAre(sonar));
  EXPECT_TRUE(sut.unsubscribe("you", sonar));
  EXPECT_FALSE(sut.isSensorStarted(sonar));
  EXPECT_THAT(readNames(sonars), IsEmpty());
}

TEST_P(SensorManagerConformance, aBadDiagnosisStopsASensorUntilItIsGoodAgainAndLookAgainIsCalled) {
  sut.subscribe("me", "Sonar");
  for (const auto& name : sonars) EXPECT_TRUE(sut.setSensorDiagnosis(name, false));
  EXPECT_FALSE(sut.isSensorStarted(sonar) || sut.isSensorDiagnosisSuccess(sonar));
  EXPECT_TRUE(sut.isSensorEnabled(sonar));
  EXPECT_EQ(sut.getEnabledSensorList().count(sonar), 0u);
  sut.subscribe("you", "Sonar");
  EXPECT_FALSE(sut.isSensorStarted(sonar));
  EXPECT_THAT(readNames(sonars), IsEmpty());
  for (const auto& name : sonars) EXPECT_TRUE(sut.setSensorDiagnosis(name, true));
  sut.lookAgain();
  EXPECT_THAT(readNames(sonars), ElementsAreArray(sonars));
}

TEST_P(SensorManagerConformance, unknownNamesAreLoggedByOperationsButNotByQuestions) {
  log.clear();
  EXPECT_FALSE(sut.isSensorStarted("No") || sut.isSensorEnabled("No") ||
               sut.isSensorDiagnosisSuccess("No") || sut.setSensorDiagnosis("No", true) ||
               sut.isSensorSubscribedBy("No", "me") || sut.isSensor("No") || sut.isFamily("No") ||
               sut.isSensor("Asus") || sut.isFamily(sonar));
  EXPECT_THAT(log.lines(), IsEmpty());
  EXPECT_FALSE(sut.subscribe("me", "No") || sut.unsubscribe("me", "No") ||
               sut.enableSensorOrFamily("No", true) || sut.getSensorPtr("No"));
  EXPECT_THAT(sut.getSensorsByFamily("No"), IsEmpty());
  const std::string m = "Navigation.SensorManager.";
  EXPECT_THAT(
      log.lines(),
      ElementsAre("warning " + m + "subscribe: Invalid subscription name \"No\" from \"me\"",
                  "warning " + m + "unsubscribe: Invalid unsubscription name \"No\" from \"me\"",
                  "warning " + m +
                      "enableSensorOrFamily: Invalid name in enableSensorOrFamily: "
                      "\"No\"",
                  "info " + m + "getSensorPtr: Unable to find No",
                  "error " + m + "getSensorsByFamily: Wrong family asked No"));
}

TEST_P(SensorManagerConformance, subscribingSwitchingAndReadingAreThreadSafe) {
  std::latch go(4);
  const auto churn = [&](const std::string& subscriber) {
    go.arrive_and_wait();
    for (int i = 0; i < 200; ++i) {
      sut.subscribe(subscriber, "Sonar");
      sut.enableSensorOrFamily(sonar, i % 3 != 0);
      sut.setSensorDiagnosis(*sonars.rbegin(), i % 3 != 1);
      sut.unsubscribe(subscriber);
    }
  };
  const auto read = [&] {
    go.arrive_and_wait();
    for (int i = 0; i < 200; ++i) {
      for (const auto& record : sut.getMetricalData("Sonar")) {
        EXPECT_TRUE(sonars.count(record.sensorName));
      }
      EXPECT_THAT(sut.getSubscribers(), IsSubsetOf(Names{"me", "you"}));
    }
  };
  std::thread threads[] = {std::thread(churn, "me"), std::thread(churn, "you"), std::thread(read)};
  go.arrive_and_wait();
  for (int i = 0; i < 20; ++i) world->passTime();
  for (auto& thread : threads) thread.join();
  EXPECT_THAT(sut.getSubscribers(), IsEmpty());
  EXPECT_FALSE(sut.isSensorStarted(sonar));
  EXPECT_THAT(sut.getMetricalData(), IsEmpty());
}

}  // namespace
}  // namespace QV::sensor
