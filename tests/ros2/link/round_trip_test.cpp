#include <algorithm>
#include <future>
#include <optional>

#include <boost/make_shared.hpp>

#include "ros2/link/heard_robot.h"
#include "sensor/hosting/navigation_module.h"
#include "tests/ros2/link/robot_on_graph.h"
#include "tests/ros2/link/same_records.h"
#include "tests/ros2/recording/recorded_session.h"
#include "tests/session/session_in_room.h"

namespace QV::ros2 {
namespace {

/** A virtual robot on a graph and, at the same time, somebody who hears it. */
class RoundTrip {
 public:
  explicit RoundTrip(session::Session& session) : session(session), served(session) {
    // He looks about, in the machine's time, while the robot goes on.
    auto hearing = std::async(std::launch::async, [] {
      HeardRobotOptions options;
      options.graph = test::aloneOn();
      return std::make_unique<HeardRobot>(options);
    });
    while (hearing.wait_for(std::chrono::milliseconds(5)) != std::future_status::ready)
      served.step();
    heard = hearing.get();
    // People and touches are events, which come to the module.
    navigation = boost::make_shared<sensor::NavigationModule>(heard->getBroker());
    hosting.emplace(heard->getBroker(), navigation);
    auto& manager = navigation->getManager();
    heard->obey(&manager);
    for (const auto& family : manager.getFamilyNames()) manager.subscribe("test", family);
  }
  ~RoundTrip() {
    heard->drive({});
    heard->obey(nullptr);
  }

  HeardRobot& getHeard() { return *heard; }
  /** A look at both after each step, until it is so. */
  template <typename Reached>
  bool runUntil(const Reached& reached) {
    return served.runUntil([&] {
      if (!told.empty() && reached()) return true;
      add(told, session::recordsOf(session.look()));
      // Records before the first snapshots are not compared.
      if (++looks > kFirstLooks) add(read, navigation->getManager().getMetricalData());
      return false;
    });
  }

  /** Runs until both sides have the last records. */
  void finish() {
    for (int i = 0; i < 20; ++i) {
      served.step();
      add(told, session::recordsOf(session.look()));
    }
  }

  /** Records by sensor: of the robot, and of the reader. */
  RecordsBySensor told, read;

 private:
  static constexpr int kFirstLooks = 40;

  session::Session& session;
  RobotOnGraph served;
  int looks = 0;
  std::unique_ptr<HeardRobot> heard;
  boost::shared_ptr<sensor::NavigationModule> navigation;
  std::optional<ScopedModule> hosting;
};

// The records of a robot's own library equal those that a reader derives from its topics.
TEST(RoundTrip, aRobotReadFromTheGraphHasTheSameRecords) {
  auto world = test::busyWorld();
  world.map = test::makeRoom();
  world.start = Math::Pose2D(3.0f, 3.0f, 0.0f);
  const auto session = session::openVirtual("porter", world);
  test::LogCapture log;
  RoundTrip sut(*session);
  const auto sees = [&](std::initializer_list<const char*> sensors) {
    return std::ranges::all_of(
        sensors, [&](const std::string& sensor) { return hasPoints(sut.read, sensor); });
  };
  sut.getHeard().drive({0.0f, 0.0f, 0.2f});
  EXPECT_TRUE(sut.runUntil([&] {
    return sut.read["FrontLaser"].size() > 20 &&
           sees({"FrontLaser", "LeftLaser", "ShovelLaser", "HoleLaser", "FrontSonar", "BackSonar",
                 "DepthCamera", "PeoplePerception"});
  }));
  session->setPose({9.3f, 3.0f, 0.0f});
  sut.getHeard().drive({0.4f, 0.0f, 0.0f});
  EXPECT_TRUE(sut.runUntil([&] { return sees({"FrontBumper"}); }));
  sut.finish();
  expectSameRecords(sut.told, sut.read);
}

}  // namespace
}  // namespace QV::ros2
