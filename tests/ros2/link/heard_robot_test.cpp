#include "ros2/link/heard_robot.h"

#include <cmath>
#include <limits>
#include <set>

#include <boost/make_shared.hpp>
#include <gmock/gmock.h>

#include "platform/middleware/qv_memory_proxy.h"
#include "ros2/messages/geometry_msgs.h"
#include "ros2/recording/internal/bag_robot.h"
#include "sensor/real/real_sensor_manager.h"
#include "session/usage_error.h"
#include "tests/ros2/link/ticking_robot.h"
#include "tests/ros2/recording/recorded_session.h"
#include "tests/support/fake_sensor.h"
#include "tests/support/log_capture.h"
#include "tests/support/temporary_folder.h"

namespace QV::ros2 {
namespace {

using test::TickingRobot;
using testing::Contains;
using testing::HasSubstr;
using testing::Not;
using Stamp = TickingRobot::Stamp;

constexpr float kInfinity = std::numeric_limits<float>::infinity();
constexpr float kQuarter = 0.5f * std::numbers::pi_v<float>;

sensor_msgs::LaserScan scanAt(const Stamp& now, float range) {
  sensor_msgs::LaserScan scan;
  scan.header = {now, "laser"};
  scan.angle_min = -1.0f;
  scan.angle_max = 1.0f;
  scan.angle_increment = 1.0f;
  scan.range_min = 0.1f;
  scan.range_max = 5.0f;
  scan.ranges = {range, range, kInfinity};
  return scan;
}

Stamp wallStamp() {
  const auto now = std::chrono::system_clock::now().time_since_epoch();
  const auto second = std::chrono::duration_cast<std::chrono::seconds>(now);
  return {static_cast<std::int32_t>(second.count()),
          static_cast<std::uint32_t>((now - second) / std::chrono::nanoseconds(1))};
}

sensor_msgs::Range rangeAt(const Stamp& now, float value) {
  sensor_msgs::Range range;
  range.header = {now, "sonar"};
  range.field_of_view = 0.5f;
  range.min_range = 0.2f;
  range.max_range = 4.0f;
  range.range = value;
  return range;
}

sensor_msgs::Range contactAt(const Stamp& now, bool isThere) {
  sensor_msgs::Range range = rangeAt(now, isThere ? -kInfinity : kInfinity);
  range.min_range = range.max_range;
  return range;
}

geometry_msgs::TransformStamped frameAt(const Stamp& now, const std::string& parent,
                                        const std::string& child, const Math::Pose2D& pose) {
  geometry_msgs::TransformStamped frame{{now, parent}, child, {}};
  frame.transform.translation = {pose.x, pose.y, 0.0};
  frame.transform.rotation = {0.0, 0.0, std::sin(0.5 * pose.theta), std::cos(0.5 * pose.theta)};
  return frame;
}

const Math::MetricalData* findRecord(const std::vector<Math::MetricalData>& records,
                                     const std::string& sensor) {
  const auto found = std::ranges::find(records, sensor, &Math::MetricalData::sensorName);
  return found == records.end() ? nullptr : &*found;
}

/** Knows a kind of somebody's own, whose key holds a range. */
sensor::SensorFactory withWhiskers() {
  Model::SensorKind kind{41, "Whisker", "Whisker"};
  kind.keys = {1, 1, 1, "range (m)", Model::KeyContent::range};
  sensor::SensorFactory factory = sensor::SensorFactory::standard();
  factory.add(kind, [](const sensor::SensorOrder& order) -> sensor::SensorFactory::Sensors {
    return {boost::make_shared<test::FakeSensor>(order.config.name, order.kind.family)};
  });
  return factory;
}

struct HeardRobotTest : testing::Test {
  HeardRobotTest() { tfStatic->write(tf2_msgs::TFMessage{{laser}}); }

  /** Without it a warning names the sonar. */
  void placeSonar() {
    tfStatic->write(tf2_msgs::TFMessage{{laser, frameAt({}, "base_link", "sonar", {})}});
  }

  /** A scan and a sonar's range each tick. */
  void startSensors() {
    scans = publish("/scan", sensor_msgs::LaserScan::getType());
    sonars = publish("/sonar", sensor_msgs::Range::getType());
    robot.say("scan", [this](const Stamp& now) { scans->write(scanAt(now, 2.0f)); });
    robot.say("sonar", [this](const Stamp& now) { sonars->write(rangeAt(now, 1.5f)); });
  }

  std::unique_ptr<Publisher> publish(const std::string& topic, const MessageType& type,
                                     const Qos& qos = {}) {
    return robot.getNode().publish(topic, type, qos);
  }

  std::unique_ptr<session::Session> open(
      const std::string& description = {},
      const sensor::SensorFactory& sensors = sensor::SensorFactory::standard()) const {
    HeardRobotOptions options;
    options.graph = test::aloneOn();
    options.description = description;
    options.sensors = sensors;
    return openHeardRobot(options);
  }

  static bool runUntil(session::Session& session, const std::function<bool()>& reached) {
    for (int i = 0; i < 200 && !reached(); ++i) session.run(boost::chrono::milliseconds(100));
    return reached();
  }

  static bool has(session::Session& session, const std::string& sensor) {
    return findRecord(session::recordsOf(session.look()), sensor) != nullptr;
  }

  std::vector<std::string> warnings() const { return log.lines(ko::log::Level::warning); }

  const geometry_msgs::TransformStamped laser =
      frameAt({}, "base_link", "laser", {0.2f, 0.1f, kQuarter});
  test::LogCapture log;
  // The publishers outlive the thread that uses them.
  std::unique_ptr<Publisher> scans;
  std::unique_ptr<Publisher> sonars;
  std::vector<std::unique_ptr<Publisher>> others;
  TickingRobot robot;
  std::unique_ptr<Publisher> tfStatic =
      publish("/tf_static", tf2_msgs::TFMessage::getType(), {true, true, 1});
};

TEST_F(HeardRobotTest, sensorsAreDerivedFromTopicsAndGiveTheirValues) {
  startSensors();
  others.push_back(publish("/tf", tf2_msgs::TFMessage::getType()));
  robot.say("tf", [tf = others[0].get()](const Stamp& now) {
    tf->write(tf2_msgs::TFMessage{{frameAt(now, "odom", "base_link", {3.0f, 4.0f, 0.5f})}});
  });
  const auto sut = open();
  sut->subscribe("test", {"scan", "sonar"});
  ASSERT_TRUE(runUntil(*sut, [&] { return has(*sut, "scan") && has(*sut, "sonar"); }));

  const auto snapshot = sut->look();
  const auto records = session::recordsOf(snapshot);
  const auto* laser = findRecord(records, "scan");
  ASSERT_EQ(laser->points.size(), 2u);
  const auto ahead = laser->sensorTransform * laser->points[1];
  EXPECT_NEAR(ahead.x, 0.2f, 1e-4f);
  EXPECT_NEAR(ahead.y, 2.1f, 1e-4f);
  EXPECT_NEAR(laser->fieldOfView.angularRange, 2.0f, 1e-5f);
  EXPECT_LT(Math::age(*laser, snapshot.time), boost::chrono::seconds(1));
  EXPECT_NEAR(Math::norm(findRecord(records, "sonar")->points[7]), 1.5f, 1e-4f);
  EXPECT_NEAR(snapshot.pose.x, 3.0f, 1e-5f);
  EXPECT_NEAR(snapshot.pose.theta, 0.5f, 1e-5f);

  // An old pose looks like one of now.
  robot.fallSilent("tf");
  others.clear();
  const auto isGone = Contains(HasSubstr(
      "/tf (tf2_msgs/msg/TFMessage): nobody publishes it any more: what it said last counts on"));
  EXPECT_TRUE(runUntil(*sut, [&] { return testing::Matches(isGone)(warnings()); }));
  sut->run(boost::chrono::seconds(3));
  EXPECT_THAT(warnings(), isGone.Times(1));
  EXPECT_NEAR(sut->look().pose.x, 3.0f, 1e-5f);
}

TEST_F(HeardRobotTest, clockAndMapAreLookedForUnderTheirOtherNames) {
  startSensors();
  robot.publishClock(false);
  others.push_back(publish("/r2/clock", rosgraph_msgs::Clock::getType()));
  robot.say("clock", [clock = others[0].get()](const Stamp& now) {
    clock->write(rosgraph_msgs::Clock{now});
  });
  others.push_back(publish("/r2/map", nav_msgs::OccupancyGrid::getType(), {true, true, 1}));
  const nav_msgs::OccupancyGrid map{{{}, "map"}, {{}, 0.05f, 2, 1, {}}, {0, 100}};
  others[1]->write(map);
  HeardRobotOptions options;
  options.graph = test::aloneOn();
  options.graph.remaps = {{"/clock", "/r2/clock"}, {"/map", "/r2/map"}};
  const auto sut = openHeardRobot(options);
  EXPECT_EQ(sut->getMap()->getWidth(), 2);
  sut->subscribe("test", {"scan"});
  // By the wall clock the scans would be far too old.
  EXPECT_TRUE(runUntil(*sut, [&] { return has(*sut, "scan"); }));
}

TEST_F(HeardRobotTest, itsPoseIsInTheFrameOfTheGraphsMapWithAnotherMapToo) {
  startSensors();
  placeSonar();
  others.push_back(publish("/map", nav_msgs::OccupancyGrid::getType(), {true, true, 1}));
  others[0]->write(nav_msgs::OccupancyGrid{{{}, "world"}, {{}, 0.05f, 2, 1, {}}, {0, 100}});
  others.push_back(publish("/tf", tf2_msgs::TFMessage::getType()));
  robot.say("tf", [tf = others[1].get()](const Stamp& now) {
    tf->write(tf2_msgs::TFMessage{{frameAt(now, "earth", "world", {50.0f, 0.0f, 0.0f}),
                                   frameAt(now, "world", "base_link", {3.0f, 4.0f, 0.0f})}});
  });
  HeardRobotOptions options;
  options.graph = test::aloneOn();
  options.map = makeUnknownMap();
  const auto sut = openHeardRobot(options);
  EXPECT_EQ(sut->getMap(), options.map);
  sut->run(boost::chrono::seconds(3));
  EXPECT_FLOAT_EQ(sut->look().pose.x, 3.0f);
  EXPECT_THAT(warnings(), testing::IsEmpty());
}

TEST_F(HeardRobotTest, aTopicIsSubscribedToOnlyWhileItsSensorIs) {
  startSensors();
  const auto sut = open();
  // The survey had subscribed to them.
  ASSERT_TRUE(runUntil(
      *sut, [&] { return scans->getReaderCount() == 0 && sonars->getReaderCount() == 0; }));
  sut->subscribe("test", {"scan"});
  ASSERT_TRUE(runUntil(*sut, [&] { return has(*sut, "scan"); }));
  EXPECT_EQ(scans->getReaderCount(), 1u);
  EXPECT_EQ(sonars->getReaderCount(), 0u);
  sut->unsubscribe("test", {"scan"});
  ASSERT_TRUE(runUntil(*sut, [&] { return scans->getReaderCount() == 0; }));

  // An old measurement must not be read after a restart.
  robot.fallSilent("scan");
  sut->subscribe("test", {"scan"});
  ASSERT_TRUE(runUntil(*sut, [&] { return scans->getReaderCount() == 1; }));
  sut->run(boost::chrono::milliseconds(300));
  EXPECT_FALSE(has(*sut, "scan"));
  robot.say("scan", [this](const Stamp& now) { scans->write(scanAt(now, 0.5f)); });
  ASSERT_TRUE(runUntil(*sut, [&] { return has(*sut, "scan"); }));
  const auto records = session::recordsOf(sut->look());
  EXPECT_NEAR(Math::norm(findRecord(records, "scan")->points.at(0)), 0.5f, 1e-4f);
}

TEST_F(HeardRobotTest, recordsStopWithTheirPublisherAndReturnWithIt) {
  startSensors();
  const auto sut = open();
  sut->subscribe("test", {"scan", "sonar"});
  ASSERT_TRUE(runUntil(*sut, [&] { return has(*sut, "scan") && has(*sut, "sonar"); }));
  for (const char* const name : {"scan", "sonar"}) robot.fallSilent(name);
  scans.reset();
  sonars.reset();
  ASSERT_TRUE(runUntil(*sut, [&] { return !has(*sut, "scan") && !has(*sut, "sonar"); }));
  EXPECT_THAT(warnings(), Contains(HasSubstr("/scan (sensor_msgs/msg/LaserScan): nobody publishes "
                                             "it any more"))
                              .Times(1));
  startSensors();
  EXPECT_TRUE(runUntil(*sut, [&] { return has(*sut, "scan") && has(*sut, "sonar"); }));
}

TEST_F(HeardRobotTest, aRobotThatIsGoneWithItsClockIsSilentAndReturns) {
  startSensors();
  const auto sut = open();
  sut->subscribe("test", {"scan", "sonar"});
  ASSERT_TRUE(runUntil(*sut, [&] { return has(*sut, "scan") && has(*sut, "sonar"); }));
  for (const char* const name : {"scan", "sonar"}) robot.fallSilent(name);
  robot.publishClock(false);
  scans.reset();
  sonars.reset();
  const auto health = [&](std::size_t sensor) {
    return sut->look().sensors.at(sensor).health.state;
  };
  EXPECT_TRUE(runUntil(*sut, [&] { return !has(*sut, "scan") && !has(*sut, "sonar"); }));
  EXPECT_TRUE(runUntil(*sut, [&] { return health(0) == sensor::HealthState::silent; }));
  const auto stops = HasSubstr("/clock: nobody publishes it any more: time goes on by the machine");
  EXPECT_THAT(warnings(), Contains(stops).Times(1));
  robot.setClock(10);
  robot.publishClock(true);
  startSensors();
  EXPECT_TRUE(runUntil(*sut, [&] { return has(*sut, "scan") && has(*sut, "sonar"); }));
}

TEST_F(HeardRobotTest, stampsFarOffAreRefusedAndOtherSensorsGoOn) {
  startSensors();
  const auto sut = open();
  sut->subscribe("test", {"scan", "sonar"});
  ASSERT_TRUE(runUntil(*sut, [&] { return has(*sut, "scan") && has(*sut, "sonar"); }));
  for (const int off : {-20, 20}) {
    log.clear();
    robot.say("scan", [this, off](const Stamp& now) {
      scans->write(scanAt({now.sec + off, now.nanosec}, 1.0f));
    });
    const auto refused = HasSubstr(off < 0 ? "s old given" : "s ahead given");
    ASSERT_TRUE(runUntil(*sut, [&] { return !warnings().empty(); }));
    sut->run(boost::chrono::seconds(1));
    EXPECT_THAT(warnings(), Contains(refused).Times(1));
    EXPECT_TRUE(has(*sut, "sonar"));
    robot.say("scan", [this](const Stamp& now) { scans->write(scanAt(now, 2.0f)); });
    ASSERT_TRUE(runUntil(*sut, [&] {
      return !log.lines().empty() && log.lines().back().find("valid again") != std::string::npos;
    }));
  }
}

TEST_F(HeardRobotTest, timeFollowsAClockThatPausesAndGoesOnWhenItJumpsBack) {
  startSensors();
  const auto sut = open();
  sut->subscribe("test", {"scan"});
  ASSERT_TRUE(runUntil(*sut, [&] { return has(*sut, "scan"); }));

  // keepPace() does not return the elapsed time.
  const auto begin = ko::Clock::now();
  const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(30);
  while (ko::Clock::now() < begin + boost::chrono::seconds(2) &&
         std::chrono::steady_clock::now() < end)
    sut->keepPace(boost::chrono::milliseconds(20));
  EXPECT_GE(ko::Clock::now(), begin + boost::chrono::seconds(2));

  robot.pause(true);
  // The last messages may still be on their way.
  ko::Clock::time_point stopped;
  for (int i = 0; i < 10 && ko::Clock::now() != stopped; ++i) {
    stopped = ko::Clock::now();
    sut->run(boost::chrono::seconds(1000));
    sut->keepPace(boost::chrono::seconds(1));
  }
  EXPECT_EQ(ko::Clock::now(), stopped);
  robot.pause(false);

  robot.setClock(10);
  sut->run(boost::chrono::seconds(1));
  EXPECT_GE(ko::Clock::now(), stopped + boost::chrono::seconds(1));
  EXPECT_THAT(warnings(), Contains(HasSubstr("the clock of the graph has leapt by -")).Times(1));
  const auto snapshot = sut->look();
  const auto records = session::recordsOf(snapshot);
  ASSERT_TRUE(findRecord(records, "scan"));
  EXPECT_LT(Math::age(*findRecord(records, "scan"), snapshot.time),
            boost::chrono::milliseconds(500));
}

TEST_F(HeardRobotTest, isPlayedFromARecordingWithTheSameRecords) {
  startSensors();
  const auto changing = [](const Stamp& now) {
    return 1.0f + 1e-9f * static_cast<float>(now.nanosec);
  };
  robot.say("scan", [=, this](const Stamp& now) { scans->write(scanAt(now, changing(now))); });
  robot.say("sonar", [=, this](const Stamp& now) { sonars->write(rangeAt(now, changing(now))); });
  const test::TemporaryFolder folder;
  const std::string path = folder / "run.mcap";
  // Snapshots are taken at arbitrary times, as with keepPace().
  test::recordSession(*open(), path, 40, [this](session::Session& session, int cycle) {
    for (int i = 0; i < 3; ++i) session.keepPace(boost::chrono::milliseconds(20));
    if (cycle == 20) robot.fallSilent("sonar");
  });
  const auto comparison = test::compareSession(path);
  EXPECT_EQ(comparison.difference, "");
  EXPECT_EQ(comparison.looks, 40);
  EXPECT_GT(comparison.records, 50u);
}

/** The description, up to its end, of a robot with a sonar on an arm that a joint lifts. */
const std::string kLifted = R"(<robot name="mine"><kind code="1"/><link name="base_link"/>
    <link name="arm"/><joint name="lift" type="prismatic"><parent link="base_link"/>
      <child link="arm"/><axis xyz="0 0 1"/><limit lower="0" upper="1" effort="1" velocity="1"/></joint>
    <sensor name="High" type="Sonar"><parent link="arm"/>
      <property key="minimumDetectionDistance" value="0.2"/>
      <property key="maximumDetectionDistance" value="4"/>
      <property key="horizontalAngularRange" value="0.5"/>
      <property key="topic" value="/sonar"/><property key="frame" value="sonar"/>
      <memory_key>high</memory_key></sensor>)";

TEST_F(HeardRobotTest, isPlayedFromARecordingWithItsJointsWhereTheyWere) {
  const std::string description = kLifted + "</robot>";
  startSensors();
  others.push_back(publish("/joint_states", sensor_msgs::JointState::getType()));
  robot.say("lift", [this](const Stamp& now) {
    others[0]->write(sensor_msgs::JointState{{now, ""}, {"lift"}, {1e-9 * now.nanosec}, {}, {}});
  });
  const test::TemporaryFolder folder;
  const std::string path = folder / "run.mcap";
  std::set<float> heights;
  test::recordSession(*open(description), path, 20, [&](session::Session& session, int) {
    const auto records = session::recordsOf(session.look());
    const auto* sonar = findRecord(records, "High");
    if (sonar) heights.insert(sonar->sensorTransform(2, 3));
  });
  EXPECT_GT(heights.size(), 5u);
  const auto comparison = test::compareSession(path);
  EXPECT_EQ(comparison.difference, "");
  EXPECT_GT(comparison.records, 5u);
}

TEST_F(HeardRobotTest, drivesByTheTypeThatTheRobotSubscribesTo) {
  startSensors();
  placeSonar();
  std::mutex mutex;
  std::vector<geometry_msgs::Twist> twists;
  const auto sut = open();
  auto listen = robot.getNode().subscribe(
      "/cmd_vel", geometry_msgs::Twist::getType(), {}, [&](const ReceivedMessage& message) {
        const std::lock_guard lock(mutex);
        twists.push_back(fromCdr<geometry_msgs::Twist>(message.cdr));
      });
  const auto count = [&](double forward) {
    const std::lock_guard lock(mutex);
    return std::ranges::count_if(twists, [&](const auto& t) { return t.linear.x == forward; });
  };
  sut->keepPace(ko::Duration::zero());
  EXPECT_EQ(listen->getWriterCount(), 0u);
  sut->drive(0.25f, 0.5f);
  // Again and again, as long as it holds.
  EXPECT_TRUE(runUntil(*sut, [&] { return count(0.25) >= 3; }));
  sut->stop();
  EXPECT_TRUE(runUntil(*sut, [&] { return count(0.0) >= 2; }));
  const auto moved = count(0.25);
  sut->run(boost::chrono::seconds(1));
  EXPECT_EQ(count(0.25), moved);
  EXPECT_THROW(sut->setPose({}), session::UsageError);
  EXPECT_THAT(warnings(), testing::IsEmpty());
  listen.reset();
  sut->drive(0.5f, 0.0f);
  EXPECT_TRUE(runUntil(*sut, [&] { return !warnings().empty(); }));
  sut->run(boost::chrono::seconds(3));
  EXPECT_THAT(warnings(), testing::ElementsAre(HasSubstr("/cmd_vel: nobody subscribes to it")));
}

TEST_F(HeardRobotTest, topicsComeFromTheDescriptionElseFromTheDefaultNames) {
  const std::string description = kLifted + R"(
    <sensor name="Whisker" type="Whisker"><property key="maximumDetectionDistance" value="4"/>
      <property key="frame" value="sonar"/><memory_key>whisker</memory_key></sensor>
    <sensor name="Bumper" type="Touch"><parent link="base_link"/>
      <property key="frame" value="sonar"/></sensor></robot>)";
  startSensors();
  others.push_back(publish("/Bumper/contact", sensor_msgs::Range::getType()));
  others.push_back(publish("/joint_states", sensor_msgs::JointState::getType()));
  others.push_back(publish("/odom", nav_msgs::Odometry::getType()));
  others.push_back(publish("/Whisker/range", sensor_msgs::Range::getType()));
  robot.say("rest", [this](const Stamp& now) {
    others[0]->write(contactAt(now, true));
    others[3]->write(rangeAt(now, 1.5f));
    others[1]->write(sensor_msgs::JointState{{now, ""}, {"lift", "wheel"}, {0.5, 1.0}, {}, {}});
    nav_msgs::Odometry moving;
    moving.header = {now, "odom"};
    moving.pose.pose.orientation.w = 1.0;
    moving.twist.twist.linear.x = 0.75;
    others[2]->write(moving);
  });
  const auto sut = open(description, withWhiskers());
  sut->subscribe("test", sut->getManager().getFamilyNames());
  ASSERT_TRUE(runUntil(*sut, [&] { return has(*sut, "High") && has(*sut, "base_link"); }));
  const QVMemoryProxy memory(sut->getBroker());
  EXPECT_TRUE(runUntil(*sut, [&] { return memory.getData("whisker") == QVValue(1.5f); }));
  EXPECT_TRUE(sut->getManager().isSensorStarted("Whisker"));
  EXPECT_TRUE(sut->getKinds().findName("Whisker"));
  EXPECT_TRUE(runUntil(*sut, [&] { return sut->look().velocity.x == 0.75f; }));
  // The record must lie at the robot's pose at measurement time.
  EXPECT_TRUE(runUntil(*sut, [&] {
    const auto records = session::recordsOf(sut->look());
    const auto* sonar = findRecord(records, "High");
    return sonar && sonar->sensorTransform(2, 3) == 0.5f;
  }));
}

TEST_F(HeardRobotTest, aUsersManagerReadsItInRealTime) {
  startSensors();
  robot.say("scan", [this](const Stamp&) { scans->write(scanAt(wallStamp(), 2.0f)); });
  HeardRobotOptions options;
  options.graph = test::aloneOn();
  options.usesSimTime = false;
  HeardRobot sut(options);
  sensor::RealSensorManager manager(sut.getBroker());
  sut.obey(&manager);
  manager.subscribe("test", "scan");
  const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(30);
  while (manager.getMetricalData("scan").empty() && std::chrono::steady_clock::now() < end)
    std::this_thread::yield();
  const auto records = manager.getMetricalData("scan");
  ASSERT_EQ(records.size(), 1u);
  EXPECT_LT(Math::age(records[0], ko::Clock::now()), boost::chrono::seconds(5));
  while (sonars->getReaderCount() > 0 && std::chrono::steady_clock::now() < end)
    std::this_thread::yield();
  EXPECT_EQ(sonars->getReaderCount(), 0u);
  sut.obey(nullptr);
}

TEST_F(HeardRobotTest, aGraphWithoutSensorTopicsIsRefused) {
  EXPECT_THAT([&] { open(); },
              testing::ThrowsMessage<std::runtime_error>(
                  "on the graph a topic of LaserScan, Range, a depth Image or PointCloud2 "
                  "expected, none found"));
}

}  // namespace
}  // namespace QV::ros2
