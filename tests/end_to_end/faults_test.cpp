#include <algorithm>
#include <array>
#include <cmath>
#include <map>

#include "platform/ko/simulated_time.h"
#include "platform/middleware/qv_broker.h"
#include "sensor/hosting/navigation_module.h"
#include "sensor/real/real_sensor_manager.h"
#include "tests/support/log_capture.h"
#include "tests/support/porter.h"
#include "tests/support/vocabulary.h"
#include "tests/support/walled_map.h"

namespace QV {
namespace {

using robot::FaultKind;

// Cycles of 100 ms: for each kind a window in which it counts, and a pause to recover in.
constexpr int kFirstWindow = 10;
constexpr int kWindow = 40;
constexpr int kPause = 20;
constexpr int kPerKind = kWindow + kPause;
constexpr int kKinds = 7;
constexpr int kCycles = kFirstWindow + kKinds * kPerKind;
// Into a window, or a pause: what was there before is gone.
constexpr int kSettled = 30;
constexpr int kRecovered = 10;

int windowOf(FaultKind kind) {
  return kFirstWindow + static_cast<int>(kind) * kPerKind;
}

/** The sum of a sensor's records of one cycle. */
struct Reading {
  std::size_t points = 0;
  float nearest = 0.0f;
  std::string value = {};
  ko::Clock::time_point time = {};

  friend bool operator==(const Reading&, const Reading&) = default;
  friend void PrintTo(const Reading& reading, std::ostream* out) {
    *out << reading.points << " points at " << reading.time.time_since_epoch().count() << ": "
         << reading.value;
  }

  void add(const Math::MetricalData& record) {
    double sum = 0.0;
    for (const auto& point : record.points) {
      nearest = ++points == 1 ? norm(point) : std::min(nearest, norm(point));
      sum += static_cast<double>(points) * (point.x + 2.0 * point.y + 3.0 * point.z);
    }
    value.append(record.sensorName).append(" ").append(std::to_string(sum)).append("; ");
    time = record.timestamp;
  }
};

using Readings = std::vector<Reading>;

/** The readings of each sensor of the manager, and of each bumper, over the cycles of a run. */
using Outcome = std::map<std::string, Readings>;

boost::shared_ptr<OccupancyMap> bareRoom() {
  return boost::make_shared<OccupancyMap>(test::makeWalledMap(60, 60, 0.1f));
}

/**
 * Makes a world between two kerbs, one before and one behind, with somebody who walks to and fro.
 */
robot::WorldOptions makeWorld() {
  robot::WorldOptions world;
  world.start = {3.0f, 3.0f, 0.0f};
  world.boxes = {{{3.36f, 3.0f, 0.0f}, 0.1f, 1.0f, 0.0f, 0.05f},
                 {{2.64f, 3.0f, 0.0f}, 0.1f, 1.0f, 0.0f, 0.05f}};
  world.people = {{{{5.0f, 2.5f}, {5.0f, 3.5f}}, 0.3f}};
  world.rangeNoise = 0.005f;
  return world;
}

/** Porter leans on one kerb for half a second, and then on the other. */
Outcome runWithFaultsOf(const std::string& faulty, bool withDepth) {
  ko::SimulatedTime time;
  test::LogCapture log;
  robot::VirtualRobot porter(test::Porter::describe(), bareRoom(), makeWorld());
  const auto module = boost::make_shared<sensor::NavigationModule>(porter.getBroker());
  const ScopedModule registered(porter.getBroker(), module);
  sensor::SensorManager& manager = module->getManager();
  for (const auto& name : manager.getSensorList()) {
    if (withDepth || name != "DepthCamera") manager.subscribe("test", name);
  }
  // All lasers have started by this time.
  const ko::Clock::time_point start(milliseconds(2000));
  for (const FaultKind kind :
       faulty.empty() ? std::vector<FaultKind>() : porter.getPossibleFaults(faulty)) {
    const auto from = start.time_since_epoch() + milliseconds(100 * windowOf(kind) + 50);
    porter.setFault(faulty, kind, from, from + milliseconds(100 * kWindow));
  }
  Outcome result{{"FrontBumper", {}}, {"BackBumper", {}}};
  for (const auto& name : manager.getSensorListBySubscriber("test")) result[name];
  for (int cycle = 0; cycle < kCycles; ++cycle) {
    porter.setVelocity(cycle / 5 % 2 == 0 ? -0.3f : 0.3f, 0.0f, 0.0f);
    time.advanceTo(start + milliseconds(100 * (cycle + 1)));
    for (auto& [name, readings] : result) readings.emplace_back();
    for (const auto& record : manager.getMetricalData()) {
      result.at(record.sensorName).back().add(record);
    }
  }
  return result;
}

// Compares the records of a failing sensor in cycle `i` with those of a healthy one.
using Check = bool (*)(const Readings& failing, const Readings& healthy, std::size_t i);

bool isGone(const Readings& failing, const Readings&, std::size_t i) {
  return failing[i].points == 0;
}
bool isFrozen(const Readings& failing, const Readings&, std::size_t i) {
  return failing[i].points > 0 && failing[i].value == failing[i - 1].value;
}
bool isSteady(const Readings& failing, const Readings&, std::size_t i) {
  return failing[i].value == failing[i - 1].value;
}
bool isDifferent(const Readings& failing, const Readings& healthy, std::size_t i) {
  return failing[i].value != healthy[i].value;
}
bool isNearer(const Readings& failing, const Readings& healthy, std::size_t i) {
  return std::abs(failing[i].nearest - 0.6f * healthy[i].nearest) < 0.02f;
}
bool isPulledIn(const Readings& failing, const Readings& healthy, std::size_t i) {
  return failing[i].points == healthy[i].points && failing[i].nearest < 0.15f;
}
// Something and nothing; far and near.
bool isOpposite(const Readings& failing, const Readings& healthy, std::size_t i) {
  return failing[i].points != healthy[i].points || failing[i].nearest != healthy[i].nearest;
}
// True for one or two changes in the second that ends with the cycle: people are sought every 200
// ms.
bool changesRarely(const Readings& failing, const Readings&, std::size_t i) {
  int changes = 0;
  for (std::size_t j = i - 9; j <= i; ++j) changes += failing[j].value != failing[j - 1].value;
  return changes == 1 || changes == 2;
}
bool isLate(const Readings& failing, const Readings& healthy, std::size_t i) {
  return failing[i].value == healthy[i - 5].value || failing[i].value == healthy[i - 6].value;
}
bool comesAndGoes(const Readings& failing, const Readings& healthy, std::size_t i) {
  return failing[i].value == healthy[i].value || isGone(failing, healthy, i) ||
         isFrozen(failing, healthy, i);
}
// The records may equal those of a healthy sensor.
bool isAnything(const Readings&, const Readings&, std::size_t) {
  return true;
}
bool isOnePoint(const Readings& failing, const Readings&, std::size_t i) {
  return failing[i].points == 1;
}

/** The checks in the order of the kinds. */
const std::map<std::string, std::array<Check, kKinds>> kExpected{
    {"Sonar", {isGone, isFrozen, isDifferent, isNearer, changesRarely, isLate, comesAndGoes}},
    {"Laser", {isGone, isFrozen, isDifferent, isNearer, changesRarely, isLate, comesAndGoes}},
    {"HoleLaser", {isGone, isFrozen, isDifferent, isPulledIn, changesRarely, isLate, comesAndGoes}},
    {"BlindZone",
     {isGone, isAnything, isOnePoint, isOpposite, isAnything, isAnything, comesAndGoes}},
    {"DepthCamera", {isFrozen, isFrozen, isGone, isNearer, changesRarely, isLate, comesAndGoes}},
    {"PeoplePerception", {isGone, isFrozen, isGone, isNearer, changesRarely, isLate, comesAndGoes}},
    {"Bumper", {isSteady, isSteady, isSteady, isOpposite, isAnything, isLate, comesAndGoes}},
};

const std::array<Check, kKinds>& expectedOf(const std::string& sensor) {
  std::string longest;
  for (const auto& [ending, checks] : kExpected) {
    if (sensor.ends_with(ending) && ending.size() > longest.size()) longest = ending;
  }
  return kExpected.at(longest);
}

struct FaultsTest : testing::TestWithParam<const char*> {
  FaultsTest() {
    const bool withDepth = faulty == "DepthCamera" || faulty == "PeoplePerception";
    healthy = runWithFaultsOf("", withDepth);
    failing = runWithFaultsOf(faulty, withDepth);
  }

  void checkWindow(FaultKind kind, std::size_t window) {
    const Readings& sound = healthy.at(faulty);
    const Readings& seen = failing.at(faulty);
    const Check check = expectedOf(faulty)[static_cast<std::size_t>(kind)];
    int same = 0;
    int different = 0;
    for (std::size_t i = window + kSettled; i < window + kWindow; ++i) {
      // A blind zone is not judged while the robot moves.
      if (faulty == "BlindZone" && sound[i].points == 0) continue;
      EXPECT_TRUE(check(seen, sound, i)) << "cycle " << i << ": " << testing::PrintToString(seen[i])
                                         << " for " << testing::PrintToString(sound[i]);
      ++(seen[i].value == sound[i].value ? same : different);
    }
    EXPECT_TRUE(different > 0 || check == isAnything) << "no fault at all";
    EXPECT_TRUE(same > 0 || check != comesAndGoes) << "does not come back";
    for (std::size_t i = window + kWindow + kRecovered; i < window + kPerKind; ++i) {
      EXPECT_EQ(seen[i], sound[i]) << "recovered";
    }
  }

  const std::string faulty = GetParam();
  Outcome healthy;
  Outcome failing;
};

TEST_P(FaultsTest, matchTheDocumentedRecordsAndEndWithoutEffectOnOtherSensors) {
  for (int kind = 0; kind < kKinds; ++kind) {
    SCOPED_TRACE(getName(static_cast<FaultKind>(kind)));
    checkWindow(static_cast<FaultKind>(kind),
                static_cast<std::size_t>(windowOf(static_cast<FaultKind>(kind))));
  }
  for (const auto& [name, readings] : healthy) {
    const bool measures = std::any_of(readings.begin(), readings.end(),
                                      [](const Reading& reading) { return reading.points > 0; });
    EXPECT_EQ(measures, name != "Touch") << name << ", whose records have the bumpers' names";
    if (name == faulty) continue;
    EXPECT_EQ(failing.at(name), readings) << name;
  }
}

constexpr const char* kFaultySensors[] = {
    "BackBumper", "BackSonar", "BlindZone", "DepthCamera",      "FrontBumper", "FrontLaser",
    "FrontSonar", "HoleLaser", "LeftLaser", "PeoplePerception", "RightLaser",  "ShovelLaser"};

INSTANTIATE_TEST_SUITE_P(EverySensor, FaultsTest, testing::ValuesIn(kFaultySensors),
                         [](const auto& parameter) { return std::string(parameter.param); });

TEST(Faults, existForEverySensor) {
  robot::VirtualRobot porter(test::Porter::describe(), bareRoom(), makeWorld());
  EXPECT_THAT(porter.getFaultySensors(), testing::ElementsAreArray(kFaultySensors));
}

TEST(Faults, aLaserThatGoesOffShowsItsLastScanForASecondAndThenErrors) {
  ko::SimulatedTime time;
  test::LogCapture log;
  robot::VirtualRobot porter(test::Porter::describe(), bareRoom(), makeWorld());
  sensor::RealSensorManager manager(porter.getBroker());
  manager.subscribe("test", "FrontLaser");
  time.advance(milliseconds(500));
  const auto last = manager.getMetricalData("FrontLaser").at(0);
  porter.setFault("FrontLaser", FaultKind::off);
  log.clear();
  time.advance(milliseconds(700));
  EXPECT_EQ(manager.getMetricalData("FrontLaser").at(0).timestamp, last.timestamp);
  EXPECT_THAT(log.lines(), testing::ElementsAre(testing::HasSubstr("FrontLaser is late: ")));
  time.advance(milliseconds(500));
  EXPECT_THAT(manager.getMetricalData("FrontLaser"), testing::IsEmpty());
  log.clear();
  time.advance(milliseconds(1000));
  EXPECT_THAT(log.lines(ko::log::Level::error), testing::SizeIs(10));
}

TEST(Faults, aFailedLaserStartsOnlyAfterAGoodDiagnosis) {
  ko::SimulatedTime time;
  test::LogCapture log;
  robot::VirtualRobot porter(test::Porter::describe(), bareRoom(), makeWorld());
  sensor::RealSensorManager manager(porter.getBroker());
  porter.setFault("FrontLaser", FaultKind::off);
  time.advance(milliseconds(100));
  manager.subscribe("test", {"FrontLaser", "LeftLaser"});
  EXPECT_FALSE(manager.isSensorStarted("FrontLaser"));
  EXPECT_FALSE(manager.isSensorDiagnosisSuccess("FrontLaser"));
  EXPECT_TRUE(manager.isSensorStarted("LeftLaser")) << "shares the operation mode";
  porter.clearFault("FrontLaser");
  time.advance(milliseconds(100));
  manager.setSensorDiagnosis("FrontLaser", true);
  manager.lookAgain();
  time.advance(milliseconds(200));
  EXPECT_TRUE(manager.isSensorStarted("FrontLaser"));
  EXPECT_EQ(manager.getMetricalData("FrontLaser").size(), 1u);
}

}  // namespace
}  // namespace QV
