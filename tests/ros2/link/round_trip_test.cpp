#include <algorithm>
#include <cmath>
#include <future>
#include <limits>
#include <map>
#include <optional>

#include <boost/make_shared.hpp>

#include "ros2/link/heard_robot.h"
#include "sensor/hosting/navigation_module.h"
#include "tests/ros2/link/robot_on_graph.h"
#include "tests/ros2/recording/recorded_session.h"
#include "tests/session/session_in_room.h"

namespace QV::ros2 {
namespace {

/** A record, and for how long it was there. */
struct Seen {
  Math::MetricalData record;
  ko::Clock::time_point first;
  ko::Clock::time_point last;
};
using Records = std::vector<Seen>;

/** The difference of two records, per part. */
struct Distance {
  float points = 0.0f;
  float view = 0.0f;
  float mounting = 0.0f;
  /** The error of points below the minimum range (m). */
  float tooNear = 0.0f;

  void raise(const Distance& other) {
    points = std::max(points, other.points);
    view = std::max(view, other.view);
    mounting = std::max(mounting, other.mounting);
    tooNear = std::max(tooNear, other.tooNear);
  }
  /** Errors in parts that messages can hold weigh more. */
  friend bool operator<(const Distance& a, const Distance& b) {
    const auto held = [](const Distance& of) { return of.points + of.view + of.mounting; };
    return std::pair(held(a), a.tooNear) < std::pair(held(b), b.tooNear);
  }
};

const Distance kFar{std::numeric_limits<float>::infinity()};

float most(float a, float b) {
  return std::max(a, std::abs(b));
}

/** `told` is the robot's own. */
Distance between(const Math::MetricalData& told, const Math::MetricalData& read) {
  if (told.familyName != read.familyName || told.points.size() != read.points.size()) return kFar;
  const auto& [minTold, maxTold, angleTold, raysTold] = told.fieldOfView;
  const auto& [minRead, maxRead, angleRead, raysRead] = read.fieldOfView;
  if (raysTold != raysRead) return kFar;
  Distance distance;
  distance.view =
      most(most(most(0.0f, minTold - minRead), maxTold - maxRead), angleTold - angleRead);
  for (std::size_t i = 0; i < told.points.size(); ++i) {
    const auto &p = told.points[i], &q = read.points[i];
    // A range that is too near reads as the minimum range.
    const bool isTooNear =
        std::hypot(p.x, p.y) < minTold && std::abs(std::hypot(q.x, q.y) - minTold) < 1e-6f;
    float& farthest = isTooNear ? distance.tooNear : distance.points;
    farthest = most(most(most(farthest, p.x - q.x), p.y - q.y), p.z - q.z);
  }
  for (std::size_t i = 0; i < told.sensorTransform.values.size(); ++i)
    distance.mounting =
        most(distance.mounting, told.sensorTransform.values[i] - read.sensorTransform.values[i]);
  return distance;
}

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
  std::map<std::string, Records> told, read;

 private:
  static void add(std::map<std::string, Records>& all, std::vector<Math::MetricalData> records) {
    const auto now = ko::Clock::now();
    for (auto& record : records) {
      auto& ofSensor = all[record.sensorName];
      if (ofSensor.empty() || !(ofSensor.back().record == record))
        ofSensor.push_back({std::move(record), now, now});
      ofSensor.back().last = now;
    }
  }

  static constexpr int kFirstLooks = 40;

  session::Session& session;
  RobotOnGraph served;
  int looks = 0;
  std::unique_ptr<HeardRobot> heard;
  boost::shared_ptr<sensor::NavigationModule> navigation;
  std::optional<ScopedModule> hosting;
};

/** Returns the difference to the most similar record within 2 s. */
Distance toNearest(const Seen& read, const Records& told) {
  constexpr ko::Duration kAbout{2'000'000'000};
  Distance least = kFar;
  for (const Seen& other : told) {
    if (read.first - other.last > kAbout || other.first - read.last > kAbout) continue;
    const Distance distance = between(other.record, read.record);
    if (distance < least) least = distance;
  }
  return least;
}

bool hasPoints(const std::map<std::string, Records>& records, const std::string& sensor) {
  const auto found = records.find(sensor);
  return found != records.end() && std::ranges::any_of(found->second, [](const auto& seen) {
           return !seen.record.points.empty();
         });
}

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
  for (const auto& [sensor, records] : sut.read) {
    Distance farthest;
    for (const Seen& seen : records) farthest.raise(toNearest(seen, sut.told[sensor]));
    std::printf(
        "%-18s %3zu records, at most off: points %.3g m, too near ones %.3g m, view %.3g, "
        "mounting %.3g\n",
        sensor.c_str(), records.size(), double{farthest.points}, double{farthest.tooNear},
        double{farthest.view}, double{farthest.mounting});
    EXPECT_LE(farthest.tooNear, records[0].record.fieldOfView.minRange) << sensor;
    EXPECT_LT(farthest.points, 1e-6f) << sensor;
    EXPECT_LT(farthest.view, 1e-6f) << sensor;
    EXPECT_LT(farthest.mounting, 1e-6f) << sensor;
  }
}

}  // namespace
}  // namespace QV::ros2
