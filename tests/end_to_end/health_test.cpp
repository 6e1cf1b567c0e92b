#include <array>
#include <cmath>
#include <map>
#include <optional>
#include <ostream>
#include <set>
#include <string>
#include <vector>

#include "platform/ko/simulated_time.h"
#include "platform/middleware/qv_broker.h"
#include "sensor/core/scoped_subscription.h"
#include "sensor/hosting/navigation_module.h"
#include "tests/support/log_capture.h"
#include "tests/support/porter.h"
#include "tests/support/vocabulary.h"
#include "tests/support/walled_map.h"
#include "tests/support/watched_drive.h"

namespace QV {
namespace {

using robot::FaultKind;
using sensor::HealthState;
using enum sensor::HealthState;

// Seconds: a window for each kind of fault, and a pause to recover in.
constexpr double kFirst = 4.0;
constexpr double kFailing = 14.0;
constexpr double kHealing = 8.0;
constexpr int kFaultKinds = 7;

double windowBegin(int kind) {
  return kFirst + kind * (kFailing + kHealing);
}

/** The state that is told of a failing sensor, and within how many seconds. */
struct Expected {
  HealthState state = sound;
  double within = 2.0;
  bool occurs = true;
};
constexpr Expected kCantBeTold{};
constexpr Expected kNeverOccurs{.occurs = false};

/** A row in the order of the kinds: off, stuck, garbage, wrong, slow, delayed, intermittent. */
using Row = std::array<Expected, kFaultKinds>;
constexpr Row kOfFrontSonar{{{silent}, {frozen}, {noisy}, {suspect, 10.0}, {}, {}, {silent}}};
constexpr Row kOfBackSonar{{{silent}, {frozen}, {noisy}, kCantBeTold, {}, {}, {silent}}};
constexpr Row kOfSeen{{{late}, {frozen}, {noisy}, {suspect, 10.0}, {late}, {late}, {late}}};
// The shovel laser sees no farther than 1.5 m, and so it has little to contradict.
constexpr Row kOfShovel{{{late}, {frozen}, {noisy}, {suspect, 13.0}, {late}, {late}, {late}}};
constexpr Row kOfSideLaser{{{late}, {frozen}, {noisy}, kCantBeTold, {late}, {late}, {late}}};
constexpr Row kOfHoleLaser{{{late}, kCantBeTold, {noisy}, kCantBeTold, {late}, {late}, {late}}};
constexpr Row kOfBlindZone{{{silent}, {}, {noisy}, {}, {}, {}, {silent}}};
constexpr Row kOfPeople{{{}, {frozen}, {noisy}, {}, {}, {late}, {}}};
constexpr Row kOfBumper{{{}, {}, {noisy}, {}, kNeverOccurs, {}, {}}};

const std::map<std::string, Row> kMatrix{
    {"BackBumper", kOfBumper},       {"BackSonar", kOfBackSonar},  {"BlindZone", kOfBlindZone},
    {"DepthCamera", kOfSeen},        {"FrontBumper", kOfBumper},   {"FrontLaser", kOfSeen},
    {"FrontSonar", kOfFrontSonar},   {"HoleLaser", kOfHoleLaser},  {"LeftLaser", kOfSideLaser},
    {"PeoplePerception", kOfPeople}, {"RightLaser", kOfSideLaser}, {"ShovelLaser", kOfShovel}};

struct Told {
  double time;
  std::string sensor;
  HealthState state;
  std::string reason;

  friend void PrintTo(const Told& told, std::ostream* out) {
    *out << told.time << " s: " << told.sensor << ' ' << getName(told.state) << ": " << told.reason;
  }
};

double secondsNow() {
  return static_cast<double>(ko::Clock::now().time_since_epoch().count()) * 1e-9;
}

/** Porter goes in circles between near walls, somebody in sight, and fails in each way in turn. */
struct HealthMatrixTest : testing::TestWithParam<std::tuple<std::string, int>> {
  std::vector<Told> drive() {
    // Outlives the module, whose end changes states, too.
    std::vector<Told> all;
    ko::SimulatedTime time;
    test::LogCapture log;
    robot::WorldOptions world;
    world.seed = static_cast<std::uint64_t>(std::get<1>(GetParam()));
    const float heading =
        faulty == "PeoplePerception" ? 0.0f : 0.2f * static_cast<float>(world.seed);
    // The start lies on a circle of radius 0.6 m about the room's centre.
    world.start = {1.65f + 0.6f * std::sin(heading), 1.65f - 0.6f * std::cos(heading), heading};
    world.people = {{{{2.9f, 1.2f}, {2.9f, 1.5f}}, 0.3f}};
    world.rangeNoise = 0.005f;
    const auto map = boost::make_shared<OccupancyMap>(test::makeWalledMap(33, 33, 0.1f));
    robot::VirtualRobot porter(test::Porter::describe(), map, world);
    const auto module = boost::make_shared<sensor::NavigationModule>(porter.getBroker());
    const ScopedModule registered(porter.getBroker(), module);
    sensor::SensorManager& manager = module->getManager();
    manager.onHealthChanged([&all](const std::string& name, const sensor::SensorHealth& health) {
      all.push_back({secondsNow(), name, health.state, health.reason});
    });
    for (const auto& name : manager.getSensorList()) {
      if (name != "DepthCamera" || withDepth) manager.subscribe("test", name);
    }
    for (const FaultKind kind : porter.getPossibleFaults(faulty)) {
      const milliseconds from(static_cast<int>(1000 * windowBegin(static_cast<int>(kind))));
      porter.setFault(faulty, kind, from, from + milliseconds(static_cast<int>(1000 * kFailing)));
    }
    while (secondsNow() < windowBegin(kFaultKinds)) {
      move(porter);
      if (const auto fault = porter.findFault(faulty)) occurred.insert(*fault);
      time.advance(milliseconds(100));
    }
    return all;
  }

  // A blind zone measures while the robot stands; people must stay in sight.
  void move(robot::VirtualRobot& porter) const {
    if (faulty == "BlindZone") return;
    const bool sways = faulty == "PeoplePerception";
    const bool back = sways && static_cast<int>(secondsNow()) % 2 == 1;
    porter.setVelocity(sways ? 0.0f : 0.3f, 0.0f, back ? -0.5f : 0.5f);
  }

  void checkWindow(int kind, const std::vector<Told>& all) const {
    const double begin = windowBegin(kind);
    const Expected& expected = kMatrix.at(faulty)[static_cast<std::size_t>(kind)];
    EXPECT_EQ(occurred.contains(static_cast<FaultKind>(kind)), expected.occurs);
    std::optional<Told> first;
    std::optional<Told> last;
    bool isNamedByOther = false;
    for (const Told& told : all) {
      if (told.time < begin || told.time >= begin + kFailing + kHealing) continue;
      if (told.sensor != own) {
        isNamedByOther |= told.reason.find(own) != std::string::npos;
        EXPECT_TRUE(!isFault(told.state) || (told.state == suspect && expected.state == suspect))
            << testing::PrintToString(told);
        continue;
      }
      if (!first) first = told;
      last = told;
    }
    if (expected.state == sound) {
      EXPECT_FALSE(first) << testing::PrintToString(*first);
      return;
    }
    ASSERT_TRUE(first);
    EXPECT_EQ(getName(first->state), std::string(getName(expected.state)));
    EXPECT_LE(first->time - begin, expected.within) << testing::PrintToString(*first);
    EXPECT_EQ(last->state, sound) << testing::PrintToString(*last);
    EXPECT_EQ(isNamedByOther, expected.state == suspect);
  }

  const std::string faulty = std::get<0>(GetParam());
  const bool withDepth = faulty == "DepthCamera" || faulty == "FrontSonar";
  const std::string own = faulty.ends_with("Bumper") ? "Touch" : faulty;
  std::set<FaultKind> occurred;
};

TEST_P(HealthMatrixTest, detectsTheFaultsOfTheTableInHealthMd) {
  const std::vector<Told> all = drive();
  for (int kind = 0; kind < kFaultKinds; ++kind) {
    SCOPED_TRACE(getName(static_cast<FaultKind>(kind)));
    checkWindow(kind, all);
  }
  for (const Told& told : all) {
    EXPECT_TRUE(told.time >= kFirst || !isFault(told.state)) << testing::PrintToString(told);
  }
}

std::vector<std::string> rowsOfMatrix() {
  std::vector<std::string> names;
  for (const auto& [name, row] : kMatrix) names.push_back(name);
  return names;
}

INSTANTIATE_TEST_SUITE_P(EachSensor, HealthMatrixTest,
                         testing::Combine(testing::ValuesIn(rowsOfMatrix()),
                                          testing::Values(1, 2, 3)),
                         [](const auto& parameter) {
                           return std::get<0>(parameter.param) +
                                  std::to_string(std::get<1>(parameter.param));
                         });

TEST(Health, raisesNoAlarmOnANoisyDriveAmongPeople) {
  test::WatchedDrive drive;
  drive.options.world.rangeNoise = 0.01f;
  drive.options.world.dropOuts = 0.01f;
  drive.options.world.randomPeople = 3;
  drive.run(boost::chrono::seconds(180));
  EXPECT_THAT(drive.alarms, IsEmpty());
  EXPECT_GT(drive.metres, 18.0);
}

// Walls beyond the reach of all, no noise: every record is like the one before. So is the camera's,
// of the floor.
TEST(Health, raisesNoAlarmInAnHourInAnEmptyHallNorOnADriveThroughIt) {
  test::WatchedDrive drive;
  drive.options.map = boost::make_shared<OccupancyMap>(test::makeWalledMap(60, 60, 0.5f));
  drive.options.start = Math::Pose2D(15.0f, 15.0f, 0.0f);
  drive.run(boost::chrono::seconds(3600), [](session::Session&) {});
  drive.run(boost::chrono::seconds(60), [](session::Session& robot) {
    robot.follow({{15.0f, 15.0f}, {18.0f, 15.0f}, {18.0f, 18.0f}, {15.0f, 18.0f}}, 0.3, 0.5);
  });
  EXPECT_THAT(drive.alarms, IsEmpty());
  EXPECT_GT(drive.metres, 6.0);
}

// A bumper that nothing touches has no record, and none is missing.
TEST(Health, awaitRecordsWorksWithHealthSwitchedOff) {
  const auto session = session::openVirtual("porter");
  const auto& manager = session->getManager();
  session->getManager().watchHealth(false);
  const sensor::ScopedSubscription subscription(session->getManager(), "test");
  EXPECT_THAT(subscription.awaitRecords(boost::chrono::seconds(3)), IsEmpty());
  std::set<std::string> silent = manager.getSensorList();
  for (const auto& record : manager.getMetricalData()) silent.erase(record.sensorName);
  EXPECT_THAT(silent, ElementsAre("Touch"));
}

}  // namespace
}  // namespace QV
