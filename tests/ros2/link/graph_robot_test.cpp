#include "ros2/link/graph_robot.h"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <fstream>
#include <latch>
#include <limits>
#include <list>
#include <map>
#include <set>
#include <thread>

#include "platform/model/model_utils.h"
#include "ros2/bag/bag_reader.h"
#include "ros2/link/internal/receive_buffers.h"
#include "ros2/messages/report_msgs.h"
#include "ros2/messages/scene_msgs.h"
#include "ros2/messages/sensor_msgs.h"
#include "ros2/recording/internal/message_sink.h"
#include "ros2/recording/internal/topic_survey.h"
#include "ros2/recording/session_recorder.h"
#include "ros2/recording/session_replay.h"
#include "session/internal/session_listener.h"
#include "session/internal/session_parts.h"
#include "tests/ros2/link/robot_on_graph.h"
#include "tests/ros2/recording/recorded_session.h"
#include "tests/session/session_in_room.h"
#include "tests/support/temporary_folder.h"
#include "tests/support/vocabulary.h"

namespace QV::ros2 {
namespace {

struct GraphRobotTest : testing::Test {
  const std::unique_ptr<session::Session> session =
      session::openVirtual("porter", test::busyWorld());
  test::LogCapture log;
};

/** The engine pads a message to whole words, and says so in its head or not. */
std::string padded(BytesView cdr) {
  std::string bytes(cdr.begin(), cdr.end());
  bytes.resize((bytes.size() + 3) / 4 * 4);
  bytes[3] = 0;
  return bytes;
}

std::map<std::string, std::set<std::string>> messagesIn(const std::string& path) {
  std::map<std::string, std::set<std::string>> messages;
  BagReader reader(path);
  while (const auto message = reader.next())
    messages[message->topic->name].insert(padded(message->data));
  return messages;
}

TEST_F(GraphRobotTest, publishesTheMessagesThatARecordingOfTheSameRunHas) {
  GraphRobotOptions options;
  options.noEchoIsInfinite = true;
  const test::TemporaryFolder folder;
  SessionRecorder recorder(folder / "run.mcap", *session);
  RobotOnGraph sut(*session, options);
  std::map<std::string, std::unique_ptr<Heard>> heard;
  // A recording stores all camera points as pixels; its cloud has only some.
  for (const char* const name :
       {"/tf_static", "/odom", "/robot_description", "/map", "/people", "/people_markers",
        "/FrontLaser/scan", "/LeftLaser/scan", "/RightLaser/scan", "/ShovelLaser/scan",
        "/HoleLaser/scan", "/FrontSonar/range", "/BackSonar/range", "/BlindZone/contact",
        "/DepthCamera/image", "/DepthCamera/camera_info", "/FrontLaser/points"})
    heard[name] = nullptr;
  for (const WireTopic& wire : sut.robot.getTopics()) {
    if (heard.count(wire.topic.name) == 0) continue;
    const Qos all{true, wire.topic.qos.transientLocal, 1000};
    heard[wire.topic.name] = sut.listen(wire.topic.name, *findMessageType(wire.topic.type), all);
  }
  EXPECT_TRUE(sut.runUntil([&] {
    recorder.show(session->look());
    return std::ranges::none_of(heard, [](const auto& topic) { return topic.second->isEmpty(); });
  }));
  recorder.finish();
  const auto recorded = messagesIn(folder / "run.mcap");
  for (const auto& [name, topic] : heard) {
    EXPECT_FALSE(topic->isEmpty()) << name;
    for (const auto& message : topic->messages.get())
      EXPECT_EQ(recorded.at(name).count(padded(message.cdr)), 1u) << name;
  }
}

template <typename Message>
std::int64_t stampOf(const Message& message) {
  if constexpr (requires { message.clock; }) {
    return nanoseconds(message.clock);
  } else if constexpr (requires { message.transforms; }) {
    return nanoseconds(message.transforms.front().header.stamp);
  } else {
    return nanoseconds(message.header.stamp);
  }
}

/** The time at which each stamp was written first. */
template <typename Message>
std::map<std::int64_t, std::int64_t> timesOf(Heard& heard) {
  std::map<std::int64_t, std::int64_t> times;
  for (const auto& message : heard.messages.get())
    times.emplace(stampOf(fromCdr<Message>(message.cdr)), message.sourceTime);
  return times;
}

TEST_F(GraphRobotTest, clockAndTfAreSentBeforeMessagesOfTheSameStamp) {
  RobotOnGraph sut(*session);
  const auto tf = sut.listen<tf2_msgs::TFMessage>("/tf");
  ASSERT_TRUE(sut.runUntil([&] { return !tf->isEmpty() && !sut.clock->isEmpty(); }));
  const auto scans = sut.listen<sensor_msgs::LaserScan>("/FrontLaser/scan");
  const auto ranges = sut.listen<sensor_msgs::Range>("/FrontSonar/range");
  const auto images = sut.listen<sensor_msgs::Image>("/DepthCamera/image");
  const auto clouds = sut.listen<sensor_msgs::PointCloud2>("/FrontLaser/points");
  ASSERT_TRUE(sut.runUntil([&] {
    return !scans->isEmpty() && !ranges->isEmpty() && !images->isEmpty() && !clouds->isEmpty();
  }));
  sut.run(25);
  const auto clocks = timesOf<rosgraph_msgs::Clock>(*sut.clock);
  const auto frames = timesOf<tf2_msgs::TFMessage>(*tf);
  auto messages = timesOf<sensor_msgs::LaserScan>(*scans);
  for (const auto& others :
       {timesOf<sensor_msgs::Range>(*ranges), timesOf<sensor_msgs::Image>(*images),
        timesOf<sensor_msgs::PointCloud2>(*clouds)})
    messages.insert(others.begin(), others.end());
  EXPECT_GT(messages.size(), 5u);
  for (const auto& [stamp, written] : messages) {
    const auto clock = clocks.lower_bound(stamp);
    ASSERT_TRUE(clock != clocks.end() && clock->second <= written) << stamp;
    const auto frame = frames.lower_bound(stamp);
    ASSERT_TRUE(frame != frames.end() && frame->second <= written) << stamp;
  }
  // A frame may be heard before the first clock is: their readers are matched one after the other.
  for (auto frame = frames.lower_bound(clocks.begin()->first); frame != frames.end(); ++frame)
    EXPECT_LE(clocks.lower_bound(frame->first)->second, frame->second);
  // Others' timers run when /clock comes: a hundred times a second.
  const std::int64_t length = clocks.rbegin()->first - clocks.begin()->first;
  EXPECT_GE(static_cast<std::int64_t>(clocks.size()), length / 10'000'000);
}

TEST_F(GraphRobotTest, aSensorRunsWhileSomebodyReadsOneOfItsTopics) {
  RobotOnGraph sut(*session);
  auto& manager = session->getManager();
  sut.run(5);
  EXPECT_FALSE(manager.isSensorStarted("FrontLaser"));
  auto scans = sut.listen<sensor_msgs::LaserScan>("/FrontLaser/scan");
  auto points = sut.listen<sensor_msgs::PointCloud2>("/FrontLaser/points");
  const std::int64_t since = ko::Clock::now().time_since_epoch().count() + 1'000'000'000;
  ASSERT_TRUE(sut.runUntil([&] { return !scans->isEmpty() && !points->isEmpty(); }));
  EXPECT_TRUE(manager.isSensorSubscribedBy("FrontLaser", "ROS 2"));
  EXPECT_FALSE(manager.isSensorStarted("LeftLaser"));
  EXPECT_FALSE(manager.isSensorStarted("FrontSonar"));
  EXPECT_GT(nanoseconds(scans->all<sensor_msgs::LaserScan>().front().header.stamp), since);
  scans.reset();
  sut.run(5);
  EXPECT_TRUE(manager.isSensorStarted("FrontLaser"));
  points.reset();
  EXPECT_TRUE(sut.runUntil([&] { return !manager.isSensorStarted("FrontLaser"); }));
}

struct LastDrive : session::SessionListener {
  void onWrite(const std::string&, const QVValue&, bool) override {}
  void onImage(int, const QVValue&) override {}
  void onStep(const robot::BodyStep&) override {}
  void onCommand(const session::SessionCommand& command) override {
    if (command.name == "drive") time = ko::Clock::now();
  }
  ko::Clock::time_point time;
};

TEST_F(GraphRobotTest, saysEachSensorsHealthAtLeastOnceASecond) {
  session->setFault(robot::parseFault("BackSonar:off"));
  session->subscribe("test", {"Sonar"});
  RobotOnGraph sut(*session);
  const auto heard = sut.listen<diagnostic_msgs::DiagnosticArray>("/diagnostics");
  std::map<std::string, std::byte> levels;
  EXPECT_TRUE(sut.runUntil([&] {
    for (const auto& message : heard->all<diagnostic_msgs::DiagnosticArray>())
      for (const auto& status : message.status) levels[status.name] = status.level;
    return levels["BackSonar"] == std::byte{2};
  }));
  EXPECT_EQ(levels.at("FrontSonar"), std::byte{0});
  EXPECT_EQ(levels.size(), session->getManager().getSensorList().size());
  const std::size_t before = heard->messages.get().size();
  sut.run(150);
  EXPECT_GE(heard->messages.get().size(), before + 2);
}

TEST_F(GraphRobotTest, aVelocityHoldsForHalfASecondOfTheRun) {
  LastDrive last;
  session::addListener(*session, last);
  RobotOnGraph sut(*session);
  const auto plain = sut.tool->publish("/cmd_vel", geometry_msgs::Twist::getType());
  const auto stamped = sut.tool->publish("/cmd_vel", geometry_msgs::TwistStamped::getType());
  const geometry_msgs::Twist twist{{0.2, 0.1, 0.0}, {0.0, 0.0, 0.3}};
  ASSERT_TRUE(sut.sendUntil(*plain, twist, [&] { return session->look().velocity.x == 0.2f; }));
  EXPECT_EQ(session->look().velocity.y, 0.1f);
  EXPECT_EQ(session->look().velocity.theta, 0.3f);
  ASSERT_TRUE(sut.runUntil([&] { return session->look().velocity == Math::Pose2D(); }));
  const auto held = ko::Clock::now() - last.time;
  EXPECT_GE(held, GraphRobotOptions::kHold);
  EXPECT_LE(held, GraphRobotOptions::kHold + milliseconds(60));
  EXPECT_TRUE(sut.sendUntil(*stamped, geometry_msgs::TwistStamped{{}, {{-0.1, 0.0, 0.0}, {}}},
                            [&] { return session->look().velocity.x == -0.1f; }));
  session::removeListener(*session, last);
}

geometry_msgs::PoseWithCovarianceStamped poseAt(double x, const geometry_msgs::Quaternion& turn) {
  geometry_msgs::PoseWithCovarianceStamped pose;
  pose.header.frame_id = "map";
  pose.pose.pose = {{x, 6.3, 0.0}, turn};
  return pose;
}

TEST_F(GraphRobotTest, obeysInitialposeAndGoalPose) {
  RobotOnGraph sut(*session);
  const auto poses =
      sut.tool->publish("/initialpose", geometry_msgs::PoseWithCovarianceStamped::getType());
  const auto goals = sut.tool->publish("/goal_pose", geometry_msgs::PoseStamped::getType());
  ASSERT_TRUE(sut.sendUntil(*poses, poseAt(4.0, {0.0, 0.0, 1.0, 0.0}),
                            [&] { return session->getPose().x == 4.0f; }));
  EXPECT_NEAR(std::abs(session->getPose().theta), 3.1416f, 1e-3f);
  ASSERT_TRUE(sut.sendUntil(*goals, geometry_msgs::PoseStamped{{{}, "map"}, {{5.0, 6.3, 0.0}, {}}},
                            [&] { return session->look().goal.has_value(); }));
  EXPECT_EQ(session->look().goal, Math::Position2D(5.0f, 6.3f));
}

/** In a map that is held shifted. */
std::unique_ptr<session::Session> openShifted() {
  auto options = test::inRoom({2.0f, 3.0f, 0.0f});
  const auto map = test::makeRoom();
  map->setShift({450'000.0, 5'400'000.0});
  options.map = map;
  return session::openVirtual("porter", options);
}

TEST(GraphInShiftedMap, placesMayBeInTheCoordinatesOfTheFile) {
  const auto session = openShifted();
  const test::LogCapture log;
  RobotOnGraph sut(*session);
  const auto poses =
      sut.tool->publish("/initialpose", geometry_msgs::PoseWithCovarianceStamped::getType());
  const auto goals = sut.tool->publish("/goal_pose", geometry_msgs::PoseStamped::getType());
  geometry_msgs::PoseWithCovarianceStamped pose;
  pose.header.frame_id = "utm";
  pose.pose.pose = {{450'004.13, 5'400'003.27, 0.0}, {}};
  ASSERT_TRUE(sut.sendUntil(*poses, pose, [&] { return session->getPose().x != 2.0f; }));
  EXPECT_EQ(session->getPose(), Math::Pose2D(4.13f, 3.27f, 0.0f));
  const geometry_msgs::PoseStamped goal{{{}, "utm"}, {{450'006.13, 5'400'003.27, 0.0}, {}}};
  ASSERT_TRUE(sut.sendUntil(*goals, goal, [&] { return session->look().goal.has_value(); }));
  EXPECT_EQ(session->look().goal, Math::Position2D(6.13f, 3.27f));
  ASSERT_TRUE(sut.sendUntil(*goals, geometry_msgs::PoseStamped{{{}, "base"}, {}},
                            [&] { return !log.lines(ko::log::Level::warning).empty(); }));
  EXPECT_THAT(log.lines(ko::log::Level::warning),
              ElementsAre(HasSubstr("frame \"map\" or \"utm\" expected, \"base\" given")));
}

// Others' navigation goes by the shifted map, so it needs to know by how much.
TEST(GraphInShiftedMap, itsShiftIsToldWhoeverNavigates) {
  for (const bool knowsItsWay : {true, false}) {
    const auto session = openShifted();
    GraphRobotOptions options;
    options.knowsItsWay = knowsItsWay;
    options.framePrefix = "robot1/";
    options.frames = {{"utm", "utm32"}};
    RobotOnGraph sut(*session, options);
    const auto links = sut.listen("/tf_static", tf2_msgs::TFMessage::getType(), {true, true, 1});
    ASSERT_TRUE(sut.runUntil([&] { return !links->isEmpty(); }));
    const auto link = links->all<tf2_msgs::TFMessage>().front().transforms.front();
    EXPECT_EQ(link.header.frame_id + " " + link.child_frame_id, "map utm32");
    EXPECT_EQ(link.transform.translation.x, -450'000.0);
  }
}

TEST_F(GraphRobotTest, theWorldGoesOnWhileAPathIsSearched) {
  std::atomic<int> begun = 0;
  std::atomic<int> givenUp = 0;
  std::latch isFound(1);
  session::SessionParts::of(*session).driver.setRouteFinder(
      [&, owner = std::this_thread::get_id()](const auto& question, const auto& isGivenUp) {
        ++begun;
        EXPECT_NE(std::this_thread::get_id(), owner);
        if (std::this_thread::get_id() == owner) return std::vector<Math::Position2D>();
        while (!isGivenUp && !isFound.try_wait()) std::this_thread::yield();
        if (isGivenUp) ++givenUp;
        return std::vector{question.from, question.to};
      });
  RobotOnGraph sut(*session);
  const auto goals = sut.tool->publish("/goal_pose", geometry_msgs::PoseStamped::getType());
  ASSERT_TRUE(sut.sendUntil(*goals, geometry_msgs::PoseStamped{{{}, "nowhere"}, {}},
                            [&] { return !log.lines(ko::log::Level::warning).empty(); }));
  const auto search = [&](double x, int count) {
    const geometry_msgs::PoseStamped goal{{{}, "map"}, {{x, 6.3, 0.0}, {}}};
    ASSERT_TRUE(sut.sendUntil(*goals, goal, [&] { return begun == count; }));
    goals->write(goal);
    // Each step awaits its /clock.
    sut.run(25);
    EXPECT_EQ(begun, count);
    EXPECT_EQ(session->look().goal, std::nullopt);
  };
  search(4.0, 1);
  search(4.5, 2);
  EXPECT_EQ(givenUp, 1);
  session->stop();
  ASSERT_TRUE(sut.runUntil([&] { return givenUp == 2; }));
  const auto isTakenAgain = [&] {
    return testing::Value(log.lines(), Contains(HasSubstr("/goal_pose: taken again")));
  };
  EXPECT_FALSE(isTakenAgain());
  search(5.0, 3);
  isFound.count_down();
  ASSERT_TRUE(sut.runUntil([&] { return session->look().goal.has_value(); }));
  EXPECT_EQ(session->look().goal, Math::Position2D(5.0f, 6.3f));
  EXPECT_TRUE(isTakenAgain());
}

/** Images go to readers: of so many topics, then of so many others. */
std::vector<std::string> linesOfImages(std::uint64_t limit, std::initializer_list<int> counts) {
  const test::LogCapture log;
  ImageTopics sut(limit);
  for (const int count : counts) {
    std::list<ImageTopic> topics;
    for (int i = 0; i < count; ++i) topics.emplace_back(sut);
    for (const ImageTopic& topic : topics) topic.note(153'700);
  }
  return log.lines();
}

TEST(ReceiveBuffers, areTooSmallForManyCamerasAtOnceAndTheLogSaysSoOnce) {
  constexpr std::uint64_t kUsual = 212'992;
  EXPECT_THAT(linesOfImages(kUsual, {1, 3, 3, 3}), IsEmpty());
  EXPECT_THAT(linesOfImages(4'194'304, {10}), IsEmpty());
  EXPECT_THAT(linesOfImages(kUsual, {3, 10, 20}),
              ElementsAre(AllOf(HasSubstr("images of 10 topics, 1537 kB at once"),
                                HasSubstr("hold 212 kB"), HasSubstr("net.core.rmem_max=3074000"))));
}

TEST_F(GraphRobotTest, logsOneLineForInvalidCommandsUntilAValidOneComes) {
  RobotOnGraph sut(*session);
  const auto velocities = sut.tool->publish("/cmd_vel", geometry_msgs::Twist::getType());
  const auto stamped = sut.tool->publish("/cmd_vel", geometry_msgs::TwistStamped::getType());
  const auto poses =
      sut.tool->publish("/initialpose", geometry_msgs::PoseWithCovarianceStamped::getType());
  const auto goals = sut.tool->publish("/goal_pose", geometry_msgs::PoseStamped::getType());
  const auto lines = [&] {
    auto all = log.lines(ko::log::Level::info);
    std::erase_if(all, [](const auto& line) { return line.find("ROS2.Robot") == line.npos; });
    return all;
  };
  const auto expectLine = [&](Publisher& publisher, const auto& message, const std::string& text) {
    log.clear();
    EXPECT_TRUE(sut.sendUntil(publisher, message, [&] { return !lines().empty(); })) << text;
    publisher.write(message);
    // Messages in flight must be handled before the next case.
    sut.run(50);
    EXPECT_THAT(lines(), ElementsAre(HasSubstr(text)));
  };
  const std::string refused = ": refused until it is right: ";
  const double nan = std::numeric_limits<double>::quiet_NaN();
  expectLine(*velocities, geometry_msgs::Twist{{nan, 0.0, 0.0}, {}},
             "/cmd_vel" + refused + "a finite linear.x expected, nan given");
  log.clear();
  velocities->write(geometry_msgs::Twist{{0.0, 1e300, 0.0}, {}});
  sut.run(5);
  velocities->write(Bytes{0, 1, 0, 0, 7});
  sut.run(5);
  EXPECT_THAT(lines(), IsEmpty());
  expectLine(*velocities, geometry_msgs::Twist{}, "/cmd_vel: taken again");
  expectLine(*stamped,
             geometry_msgs::TwistStamped{{{1'700'000'000, 0}, "base"}, {{1.0, 0.0, 0.0}, {}}},
             "/cmd_vel" + refused + "a stamp of /clock's time (use_sim_time)");
  auto pose = poseAt(4.0, {});
  pose.header.stamp.sec = 1'700'000'000;
  expectLine(*poses, pose, "/initialpose" + refused + "a stamp of /clock's time (use_sim_time)");
  EXPECT_EQ(session->getPose(), *test::busyWorld().start);
  expectLine(*poses, poseAt(3.0, {}), "/initialpose: taken again");
  expectLine(*poses, poseAt(4.0, {0.0, 0.0, 0.0, 0.0}),
             "/initialpose" + refused + "an orientation of length 1 expected, 0.0");
  expectLine(*goals, geometry_msgs::PoseStamped{{{}, "base"}, {}},
             "/goal_pose" + refused + "frame \"map\" expected, \"base\" given");
  const auto at = session->getPose();
  expectLine(*goals, geometry_msgs::PoseStamped{{{}, "map"}, {{at.x, at.y, 0.0}, {}}},
             "/goal_pose: taken again");
  expectLine(*goals, geometry_msgs::PoseStamped{{{}, "map"}, {{-900.0, 6.3, 0.0}, {}}},
             "/goal_pose: the robot can't get to -900.00, 6.30 m: no free path");
  EXPECT_EQ(session->look().velocity, Math::Pose2D());
  EXPECT_EQ(session->getPose(), *test::busyWorld().start);
}

TEST_F(GraphRobotTest, withNavigationOthersItPublishesNoMapFrame) {
  GraphRobotOptions options;
  options.knowsItsWay = false;
  RobotOnGraph sut(*session, options);
  const auto tf = sut.listen<tf2_msgs::TFMessage>("/tf");
  ASSERT_TRUE(sut.runUntil([&] { return !tf->isEmpty(); }));
  for (const auto& message : tf->all<tf2_msgs::TFMessage>()) {
    ASSERT_EQ(message.transforms.size(), 1u);
    EXPECT_EQ(message.transforms.front().header.frame_id, "odom");
  }
  for (const WireTopic& wire : sut.robot.getTopics())
    EXPECT_TRUE(!wire.isInput || wire.topic.name == "/cmd_vel") << wire.topic.name;
}

// Up to Humble without a variance: both ways are tried at once.
TEST(GraphRange, aMissIsMaxRangeOrInfinityAsConfigured) {
  for (const bool isInfinite : {false, true}) {
    const auto session = session::openVirtual("porter", test::inRoom({9.0f, 3.0f, 0.0f}));
    GraphRobotOptions options;
    options.noEchoIsInfinite = isInfinite;
    GraphOptions graph = test::aloneOn();
    graph.distro = isInfinite ? RosDistro::humble : RosDistro::ironOrLater;
    RobotOnGraph sut(*session, options, graph);
    const auto ranges = sut.listen<sensor_msgs::Range>("/BackSonar/range");
    ASSERT_TRUE(sut.runUntil([&] { return !ranges->isEmpty(); }));
    const auto& type =
        isInfinite ? sensor_msgs::Range::getTypeWithoutVariance() : sensor_msgs::Range::getType();
    sensor_msgs::Range range;
    type.decode(ranges->messages.get().back().cdr, &range);
    EXPECT_EQ(range.range, isInfinite ? std::numeric_limits<float>::infinity() : 4.0f);
  }
}

TEST(GraphKind, aSimulatedLaserIsALaserScanAndASonarARange) {
  const auto session = session::openSimulated(-1, test::inRoom({3.0f, 3.0f, 0.5f}));
  RobotOnGraph sut(*session);
  const auto scans = sut.listen<sensor_msgs::LaserScan>("/Laser/scan");
  ASSERT_TRUE(sut.runUntil([&] { return !scans->isEmpty(); }));
  const auto scan = scans->all<sensor_msgs::LaserScan>().back();
  const auto records = session->getManager().getMetricalData();
  ASSERT_EQ(records.size(), 1u);
  ASSERT_EQ(scan.ranges.size(), 300u);
  EXPECT_EQ(scan.header.frame_id, "base");
  std::size_t misses = 0;
  for (std::size_t i = 0; i < scan.ranges.size(); ++i) {
    const float angle = scan.angle_min + static_cast<float>(i) * scan.angle_increment;
    const bool isMiss = std::isinf(scan.ranges[i]);
    misses += isMiss ? 1 : 0;
    const float range = isMiss ? scan.range_max : scan.ranges[i];
    EXPECT_NEAR(records[0].points[i].x, range * std::cos(angle), 1e-4f) << i;
    EXPECT_NEAR(records[0].points[i].y, range * std::sin(angle), 1e-4f) << i;
  }
  EXPECT_GT(misses, 0u);
  EXPECT_LT(misses, 250u);
}

TEST(GraphKind, anEchoIsARangeAndABumperAContact) {
  const auto session = session::openSimulated(1, test::inRoom({8.5f, 3.0f, 0.0f}));
  RobotOnGraph sut(*session);
  const auto ranges = sut.listen<sensor_msgs::Range>("/Sonar/Front/range");
  const auto contacts = sut.listen<sensor_msgs::Range>("/Bumper/FrontLeft/contact");
  ASSERT_TRUE(sut.runUntil([&] { return !ranges->isEmpty() && !contacts->isEmpty(); }));
  const auto range = ranges->all<sensor_msgs::Range>().back();
  EXPECT_NEAR(range.range, session->look().sensors.back().nearest.value_or(0.0f), 1e-6f);
  EXPECT_EQ(range.max_range, 2.5f);
  EXPECT_EQ(contacts->all<sensor_msgs::Range>().back().range,
            std::numeric_limits<float>::infinity());
  session->setPose({5.0f, 3.0f, 0.0f});
  EXPECT_TRUE(sut.runUntil([&] { return ranges->all<sensor_msgs::Range>().back().range == 2.5f; }));
}

/** Returns the topics of a robot on a graph that nobody sees. */
std::vector<WireTopic> topicsOf(session::Session& session, const GraphRobotOptions& options) {
  GraphOptions nobodys;
  nobodys.range = DiscoveryRange::off;
  nobodys.remaps = {{"/robot1/FrontLaser/scan", "/scan"}};
  Graph graph(nobodys);
  return GraphRobot(graph, session, options).getTopics();
}

TEST_F(GraphRobotTest, usesTheConfiguredNamespacesAndFrames) {
  GraphRobotOptions options;
  options.nameSpace = "/robot1";
  const auto find = [&](const std::string& name) {
    for (const WireTopic& wire : topicsOf(*session, options))
      if (wire.topic.name == name) return wire.ddsName + " " + wire.ddsType;
    return std::string("none");
  };
  EXPECT_EQ(find("/scan"), "rt/scan sensor_msgs::msg::dds_::LaserScan_");
  EXPECT_EQ(find("/robot1/LeftLaser/scan"),
            "rt/robot1/LeftLaser/scan sensor_msgs::msg::dds_::LaserScan_");
  EXPECT_EQ(find("/robot1/cmd_vel"), "rt/robot1/cmd_vel geometry_msgs::msg::dds_::Twist_");
  EXPECT_NE(find("/clock"), "none");
  EXPECT_NE(find("/tf"), "none");
  options.hasOwnFrames = true;
  EXPECT_EQ(find("/tf"), "none");
  EXPECT_NE(find("/robot1/tf_static"), "none");
}

TEST_F(GraphRobotTest, refusesFramesThatAreNotThereOrThatTfRefuses) {
  const auto errorWith = [&](const std::map<std::string, std::string>& frames,
                             const std::string& prefix) {
    return errorOf([&] {
      GraphRobotOptions bad;
      bad.frames = frames;
      bad.framePrefix = prefix;
      topicsOf(*session, bad);
    });
  };
  EXPECT_EQ(errorWith({{"FrontLasr", "laser"}}, ""),
            "a frame of the robot expected (map, odom, base, a sensor or NAME_optical of a "
            "camera), \"FrontLasr\" given");
  const std::string noSlash = "a frame's name without a slash before it expected, ";
  EXPECT_EQ(errorWith({{"FrontLaser", "/laser"}}, ""), noSlash + "\"/laser\" given");
  EXPECT_EQ(errorWith({}, "/r/"), noSlash + "\"/r/BackBumper\" given");
  EXPECT_EQ(errorWith({{"base", "odom"}}, ""),
            "a name of its own for each frame expected, \"odom\" given for base and odom");
  EXPECT_EQ(errorWith({{"base", "/base"}}, "r/"), noSlash + "\"/base\" given");
  for (const std::string frame : {"base", "FrontLaser", "odom"})
    EXPECT_EQ(errorWith({{frame, "torso"}}, ""),
              "a name that no other link has expected, \"torso\" given for " + frame);
  EXPECT_EQ(errorWith({{"odom", "utm"}}, ""), "");
  EXPECT_EQ(errorWith({{"utm", "x"}}, ""),
            "a frame of the robot expected (map, odom, base, a sensor or NAME_optical of a "
            "camera), \"utm\" given");
}

TEST(GraphInShiftedMap, noOtherFrameMayHaveTheNameOfItsFilesCoordinates) {
  const auto session = openShifted();
  for (const std::string frame : {"map", "odom"}) {
    GraphRobotOptions options;
    options.frames = {{frame, "utm"}};
    EXPECT_EQ(errorOf([&] { topicsOf(*session, options); }),
              "a name of its own for each frame expected, \"utm\" given for " + frame + " and utm");
    options.frames["utm"] = "utm32";
    EXPECT_EQ(errorOf([&] { topicsOf(*session, options); }), "");
  }
}

std::unique_ptr<session::Session> openWith(const std::string& sensors) {
  const test::TemporaryFolder folder;
  const std::string path = folder / "robot.urdf";
  std::ofstream(path) << "<robot name=\"mine\"><kind code=\"1\"/><link name=\"base\"/>" << sensors
                      << "</robot>";
  return session::openVirtual(path, test::inRoom({3.0f, 3.0f, 0.0f}));
}

TEST(GraphFrames, ofOneNameInTheDescriptionAreRefusedUnlessTheyAreOne) {
  const test::LogCapture log;
  const auto sonar = [](const std::string& name, const std::string& link = "base") {
    return "<sensor name=\"" + name + "\" type=\"Sonar\"><parent link=\"" + link +
           "\"/><memory_key>k</memory_key></sensor>";
  };
  const std::string camera =
      R"(<sensor name="Eye" type="DepthCamera"><parent link="base"/></sensor>)";
  const std::string arm = R"(<link name="arm"/><joint name="shoulder" type="fixed">
      <parent link="base"/><child link="arm"/><origin xyz="1 0 0"/></joint>)";
  const auto given = [](const std::string& name, const std::string& owners) {
    return "a name of its own for each frame expected, \"" + name + "\" given for " + owners;
  };
  const std::pair<std::string, std::string> cases[] = {
      {sonar("map"), given("map", "the map and for a sensor")},
      {sonar("odom"), given("odom", "odometry and for a sensor")},
      {sonar("base"), given("base", "a link and for a sensor")},
      {arm + sonar("arm"), given("arm", "a link and for a sensor")},
      {camera + sonar("Eye_optical"), given("Eye_optical", "a sensor and for the images of Eye")},
      {arm + sonar("arm", "arm"), ""},
      {camera + sonar("utm"), ""},
      {sonar("Sonar_optical") + sonar("Sonar"), ""}};
  for (const auto& [robot, expected] : cases) {
    const auto session = openWith(robot);
    EXPECT_EQ(errorOf([&] { topicsOf(*session, {}); }), expected) << robot;
  }
}

// Whoever hears a robot by its description listens where the robot with that description speaks.
TEST(GraphTopics, areThoseThatTheDescriptionNames) {
  // Lasers without all of their properties are not built, and it is said.
  const test::LogCapture log;
  const std::string sensors = R"(
    <sensor name="front-laser" type="Laser"><parent link="base"/><property key="regIndex" value="1"/>
      <memory_keys pattern="L{i}/{X,Y}" count="3"/></sensor>
    <sensor name="Left" type="Laser"><parent link="base"/><property key="regIndex" value="2"/>
      <property key="topic" value="/left/scan"/><memory_keys pattern="M{i}/{X,Y}" count="3"/></sensor>
    <sensor name="Back" type="Sonar"><parent link="base"/><property key="topic" value="back"/>
      <memory_key>B</memory_key></sensor>
    <sensor name="Eye" type="DepthCamera"><parent link="base"/>
      <property key="topic" value="eye/depth"/></sensor>
    <sensor name="Bumper" type="Touch"><parent link="base"/></sensor>)";
  const auto session = openWith(sensors);
  std::map<std::string, std::string> told;
  for (const WireTopic& wire : topicsOf(*session, {})) told[wire.topic.name] = wire.topic.type;
  EXPECT_EQ(told["/front_laser/scan"] + told["/left/scan"],
            "sensor_msgs/msg/LaserScansensor_msgs/msg/LaserScan");
  EXPECT_EQ(told["/eye/camera_info"], "sensor_msgs/msg/CameraInfo");
  const TopicSurvey survey =
      surveyDescription(*session->getDescription(), Model::SensorKinds::standard());
  EXPECT_EQ(survey.sensors.size(), 5u);
  for (const auto& [topic, sensor] : survey.sensors)
    EXPECT_EQ(told.count(topic.front() == '/' ? topic : "/" + topic), 1u) << topic;
}

TEST(GraphTopics, areRefusedIfTwoShareOneOrItIsNone) {
  const auto errorWith = [](const std::string& name, const std::string& topic) {
    const auto sonar = [](const std::string& of, const std::string& more) {
      return "<sensor name=\"" + of + "\" type=\"Sonar\"><parent link=\"base\"/>" + more +
             "<memory_key>" + of + "</memory_key></sensor>";
    };
    const auto session = openWith(sonar("front-sonar", "") +
                                  sonar(name, "<property key=\"topic\" value=\"" + topic + "\"/>"));
    return errorOf([&] { topicsOf(*session, {}); });
  };
  const std::string shared = "a topic of its own for each sensor expected, \"";
  EXPECT_THAT(errorWith("front_sonar", ""), testing::StartsWith(shared + "/front_sonar/"));
  EXPECT_EQ(errorWith("Back", "/front_sonar/range"),
            shared + "/front_sonar/range\" given for Back and front-sonar");
  EXPECT_EQ(errorWith("Back", "/clock"), shared + "/clock\" given for the robot and Back");
  EXPECT_THAT(errorWith("Back", "bad-topic!"), testing::StartsWith("Back: a topic of letters"));
}

TEST_F(GraphRobotTest, usesTheConfiguredFrameNames) {
  GraphRobotOptions options;
  options.framePrefix = "robot1/";
  options.frames = {{"FrontLaser", "laser"}, {"base", "base_link"}, {"map", "world"}};
  RobotOnGraph sut(*session, options);
  const auto description = sut.listen("/robot_description", std_msgs::String::getType(), kLatched);
  const auto maps = sut.listen("/map", nav_msgs::OccupancyGrid::getType(), kLatched);
  const auto scans = sut.listen<sensor_msgs::LaserScan>("/FrontLaser/scan");
  const auto odometry = sut.listen<nav_msgs::Odometry>("/odom");
  ASSERT_TRUE(sut.runUntil([&] {
    return !scans->isEmpty() && !odometry->isEmpty() && !description->isEmpty() && !maps->isEmpty();
  }));
  EXPECT_EQ(scans->all<sensor_msgs::LaserScan>().front().header.frame_id, "robot1/laser");
  EXPECT_EQ(maps->all<nav_msgs::OccupancyGrid>().front().header.frame_id, "world");
  const auto told = odometry->all<nav_msgs::Odometry>().front();
  EXPECT_EQ(told.header.frame_id + " " + told.child_frame_id, "robot1/odom robot1/base_link");
  // A robot_state_publisher puts the prefix before the links by itself.
  const auto text = description->all<std_msgs::String>().front().data;
  EXPECT_EQ(Model::ModelUtils::robotFromXml(text).rootLink, "base_link");
}

TEST(GraphReplay, continuesAtAnEarlierTimeWhenARecordingRestarts) {
  const test::TemporaryFolder folder;
  test::recordSession(*session::openVirtual("porter", test::busyWorld()), folder / "run.mcap", 20);
  SessionReplay replay(folder / "run.mcap");
  replay.begin();
  RobotOnGraph sut(replay.getSession());
  const auto tf = sut.listen<tf2_msgs::TFMessage>("/tf");
  // On a busy machine readers may be found only after the end of the recording.
  ASSERT_TRUE(sut.runUntil([&] {
    if (ko::Clock::now().time_since_epoch() > boost::chrono::seconds(1))
      replay.getSession().seek(ko::Duration::zero());
    return !tf->isEmpty() && !sut.clock->isEmpty();
  }));
  sut.run(50);
  replay.getSession().seek(boost::chrono::milliseconds(300));
  const std::size_t before = tf->messages.get().size();
  sut.robot.obey();
  replay.getSession().run(boost::chrono::milliseconds(100));
  const std::int64_t most = 1'600'000'000;
  EXPECT_TRUE(tf->messages.awaitThat([&](const auto& list) {
    return list.size() > before && stampOf(fromCdr<tf2_msgs::TFMessage>(list.back().cdr)) < most;
  }));
  EXPECT_TRUE(sut.clock->messages.awaitThat([&](const auto& list) {
    return stampOf(fromCdr<rosgraph_msgs::Clock>(list.back().cdr)) < most;
  }));
}

}  // namespace
}  // namespace QV::ros2
