#include "ros2/recording/session_replay.h"

#include <cmath>
#include <filesystem>
#include <numbers>

#include <boost/make_shared.hpp>
#include <gmock/gmock.h>

#include "platform/ko/log.h"
#include "ros2/messages/report_msgs.h"
#include "ros2/messages/scene_msgs.h"
#include "ros2/messages/sensor_msgs.h"
#include "session/internal/gradual_seek.h"
#include "session/internal/seconds.h"
#include "session/usage_error.h"
#include "tests/ros2/recording/recorded_session.h"
#include "tests/support/temporary_folder.h"

namespace QV::ros2 {
namespace {

using test::compareSession;
using test::recordSession;
using testing::HasSubstr;
using testing::StartsWith;

constexpr std::uint64_t kSecond = 1'000'000'000;

// Everything that can be asked of a session's sensors, while it drives into a wall.
void meddle(session::Session& session, int cycle) {
  if (cycle == 0) session.drive(0.6f, 0.2f);
  if (cycle == 5) session.enable("Laser", false);
  if (cycle == 6) session.diagnose("DepthCamera", false);
  if (cycle == 7) session.setFault(robot::parseFault("FrontSonar:off"));
  if (cycle == 8) session.setDemand({{"page 1", {"FrontLaser", "BackSonar"}}});
  if (cycle == 9) session.unsubscribe("test", {"Sonar", "HoleLaser"});
  if (cycle == 10) session.enable("Laser", true);
  if (cycle == 11) session.diagnose("DepthCamera", true);
  if (cycle == 12) session.setFault(robot::parseFault("DepthCamera:delayed"));
  if (cycle == 14) session.subscribe("another", {"Sonar"});
  if (cycle == 16) session.setFault(robot::parseFault("RightLaser:garbage"));
  if (cycle == 18) session.clearFault("FrontSonar");
  if (cycle == 20) session.setDemand({});
}

/** A run of porter, recorded once for all tests of this process. */
const std::string& porterSession(int cycles) {
  static const test::TemporaryFolder folder;
  static std::map<int, std::string> runs;
  std::string& path = runs[cycles];
  if (!path.empty()) return path;
  path = folder / (std::to_string(cycles) + ".mcap");
  recordSession(*session::openVirtual("porter", test::busyWorld()), path, cycles, meddle);
  return path;
}

/** Copies a recording, each message as `change` leaves it. */
void copyBag(const std::string& from, const std::string& to, bool withMetadata,
             const std::function<void(const BagTopic&, Bytes&)>& change) {
  BagReader reader(from, BagOrder::file);
  BagWriter writer(to);
  std::map<const BagTopic*, std::uint16_t> topics;
  if (withMetadata) {
    for (const auto& metadata : reader.getMetadata())
      if (metadata.name == "qv") writer.addMetadata(metadata.name, metadata.values);
    for (std::size_t i = 0; i < reader.getAttachmentCount(); ++i)
      writer.addAttachment(*reader.readAttachment(i));
  }
  while (const auto message = reader.next()) {
    const auto known = topics.find(message->topic);
    const auto topic = known != topics.end() ? known->second : writer.addTopic(*message->topic);
    topics[message->topic] = topic;
    Bytes data(message->data.begin(), message->data.end());
    change(*message->topic, data);
    writer.write(topic, message->logTime, message->publishTime, data);
  }
}

geometry_msgs::TransformStamped frameOf(const std::string& parent, const std::string& child,
                                        const Math::Pose2D& pose) {
  geometry_msgs::TransformStamped frame{{{}, parent}, child, {}};
  frame.transform.translation = {pose.x, pose.y, 0.0};
  frame.transform.rotation = {0.0, 0.0, std::sin(0.5 * pose.theta), std::cos(0.5 * pose.theta)};
  return frame;
}

sensor_msgs::PointCloud2 cloudOf(const std::string& frame,
                                 const std::vector<Math::Position3D>& points) {
  sensor_msgs::PointCloud2 cloud;
  cloud.header.frame_id = frame;
  cloud.height = 1;
  cloud.width = static_cast<std::uint32_t>(points.size());
  cloud.fields = {{"x", 0, 7, 1}, {"y", 4, 7, 1}, {"z", 8, 7, 1}};
  cloud.point_step = sizeof(Math::Position3D);
  const auto* bytes = reinterpret_cast<const std::uint8_t*>(points.data());
  cloud.data.assign(bytes, bytes + points.size() * sizeof(Math::Position3D));
  return cloud;
}

/** All that goes wrong while a recording is played; what goes wrong in a beat is logged. */
std::string troubleOf(const std::string& path) {
  std::string trouble;
  const ko::log::ScopedSink sink(
      ko::log::Level::error, [&](const ko::log::Record& line) { trouble += line.message + "\n"; });
  try {
    compareSession(path);
  } catch (const std::runtime_error& error) {
    trouble += error.what();
  }
  return trouble;
}

struct SessionReplayTest : testing::Test {
  const test::TemporaryFolder folder;
  const std::string path = folder / "run.mcap";
  const std::string copy = folder / "copy.mcap";
};

TEST_F(SessionReplayTest, aVirtualRobotsRecordsAreReplayedBitForBit) {
  const auto once = compareSession(porterSession(24));
  EXPECT_EQ(once.looks, 24);
  EXPECT_GT(once.records, 180u);
  EXPECT_EQ(once.difference, "");
}

TEST_F(SessionReplayTest, simulatedRobotsAndTheirMapsAreReplayedBitForBit) {
  for (const int kind : {-1, 0, 1}) {
    session::OpenOptions options;
    options.map = boost::make_shared<OccupancyMap>(80, 60, 0.1f, Math::Pose2D(-1.0f, 0.5f, 0.3f),
                                                   std::vector<float>(80 * 60, 0.1234f));
    recordSession(*session::openSimulated(kind, options), path, 10,
                  [](session::Session& session, int cycle) {
                    session.setPose({0.2f * static_cast<float>(cycle), 2.0f, 0.37f});
                  });
    const auto comparison = compareSession(path);
    EXPECT_GT(comparison.records, 9u) << kind;
    EXPECT_EQ(comparison.difference, "") << kind;
    const SessionReplay replay(path);
    EXPECT_EQ(replay.getSession().getMap()->getCells(), options.map->getCells()) << kind;
  }
}

TEST_F(SessionReplayTest, aReplayCanBeRecordedAndReplayedBitForBit) {
  {
    SessionReplay replay(porterSession(10));
    SessionRecorder recorder(copy, replay.getSession());
    while (replay.getSession().step()) recorder.show(replay.look());
  }
  const auto comparison = compareSession(copy);
  EXPECT_EQ(comparison.looks, 10);
  EXPECT_EQ(comparison.difference, "");
}

TEST_F(SessionReplayTest, theFirstDifferenceIsNamedBySensorTimeAndField) {
  using Records = std::vector<qv_msgs::MetricalData>;
  using Place = Records::iterator;
  const std::pair<std::function<void(Records&, Place)>, const char*> cases[] = {
      {[](Records&, Place at) { at->points.at(2).y += 0.5f; }, ": points[2].y: recorded "},
      {[](Records& all, Place at) { all.erase(at); }, ": records: recorded 0, played 1"},
      {[](Records& all, Place at) { all.push_back(Records::value_type(*at)); },
       ": records: recorded 2, played 1"}};
  for (const auto& [change, expected] : cases) {
    int look = 0;
    copyBag(porterSession(10), copy, true, [&](const BagTopic& topic, Bytes& data) {
      if (topic.name != "/qv/records" || ++look != 4) return;
      auto records = fromCdr<qv_msgs::Records>(data);
      change(records.records,
             std::ranges::find(records.records, "LeftLaser", &qv_msgs::MetricalData::sensor_name));
      data = toCdr(records);
    });
    EXPECT_THAT(compareSession(copy).difference,
                testing::AllOf(HasSubstr("LeftLaser at"), HasSubstr(expected)));
  }
}

TEST_F(SessionReplayTest, changedInputsGiveChangedRecords) {
  int changed = 0;
  copyBag(porterSession(10), copy, true, [&](const BagTopic& topic, Bytes& data) {
    if (topic.name != "/qv/inputs" || changed++ != 60) return;
    auto inputs = fromCdr<qv_msgs::Inputs>(data);
    for (std::size_t i = 0; i < inputs.numbers.size(); ++i) inputs.numbers[i] ^= 1LL << 40;
    data = toCdr(inputs);
  });
  ASSERT_GT(changed, 60);
  EXPECT_NE(compareSession(copy).difference, "");
}

TEST_F(SessionReplayTest, aRecordingIsPlayedFromAnyPlaceAndBackwards) {
  SessionReplay replay(porterSession(24));
  session::Session& sut = replay.getSession();
  sut.seek(boost::chrono::milliseconds(2500));
  EXPECT_NEAR(sut.look().recording->time, 2.5, 0.1);
  sut.seek(boost::chrono::milliseconds(800));
  EXPECT_NEAR(sut.look().recording->time, 0.8, 0.1);
  while (sut.step()) ASSERT_FALSE(replay.compare());
  EXPECT_THROW(sut.drive(1.0f, 0.0f), session::UsageError);
  // At once, and not when the way begins: nobody expects an exception of run().
  EXPECT_THROW(sut.setGoal(Math::position2DFromPose2D(sut.look().pose)), session::UsageError);
  EXPECT_THAT(
      [&] {
        sut.setFault({"FrontLaser", robot::FaultKind::off});
      },
      testing::ThrowsMessage<session::UsageError>("a recording can't be made to fail"));
}

TEST_F(SessionReplayTest, aFarPlaceIsReachedInParts) {
  SessionReplay replay(porterSession(24));
  session::Session& session = replay.getSession();
  const auto partsTo = [&](double seconds) {
    session::GradualSeek sut(session, ko::Duration(std::llround(1e9 * seconds)));
    std::vector<double> parts;
    do {
      parts.push_back(session.look().recording->time);
    } while (!sut.goOn());
    parts.push_back(session.look().recording->time);
    return parts;
  };
  // Hardware that starts makes a part longer.
  const auto about = [](double seconds) { return testing::DoubleNear(seconds, 0.2); };
  EXPECT_THAT(partsTo(2.25), testing::ElementsAre(0.0, about(1.0), about(2.0), 2.25));
  EXPECT_THAT(partsTo(0.5), testing::ElementsAre(0.0, 0.5));
  EXPECT_THAT(partsTo(1e6), testing::ElementsAre(0.5, about(1.5), about(2.5),
                                                 session::inSeconds(replay.getLength())));
  EXPECT_THAT(partsTo(1.5), testing::ElementsAre(0.0, about(1.0), 1.5));
  while (session.step()) ASSERT_FALSE(replay.compare());
}

TEST_F(SessionReplayTest, sensorsAreDerivedFromAnotherRobotsTopics) {
  copyBag(porterSession(24), copy, false, [](const BagTopic&, Bytes&) {});

  SessionReplay replay(copy);
  EXPECT_FALSE(replay.isOwn());
  replay.begin();
  std::map<std::string, std::size_t> points;
  while (replay.getSession().step()) {
    for (const auto& record : session::recordsOf(replay.look()))
      points[record.sensorName] += record.points.size();
  }
  for (const char* const sensor : {"FrontLaser_scan", "FrontSonar_range", "BlindZone_contact",
                                   "DepthCamera_image", "FrontLaser_points"})
    EXPECT_GT(points[sensor], 0u) << sensor;
  // A file that has gone can't begin again: the session stays where it is.
  std::filesystem::remove(copy);
  EXPECT_THROW(replay.getSession().seek({}), std::runtime_error);
  EXPECT_GT(replay.getSession().look().recording->time, 2.0);
}

TEST_F(SessionReplayTest, anotherRobotsReplayCanBeRecordedAndReplayedBitForBit) {
  const std::string again = folder / "again.mcap";
  copyBag(porterSession(10), copy, false, [](const BagTopic&, Bytes&) {});
  {
    SessionReplay replay(copy);
    SessionRecorder recorder(again, replay.getSession());
    replay.begin();
    while (replay.getSession().step()) recorder.show(replay.getSession().look());
  }
  const auto comparison = compareSession(again);
  EXPECT_GT(comparison.records, 250u);
  EXPECT_EQ(comparison.difference, "");
}

// Each cloud has an obstacle 2 m ahead of the robot, a lamp above, and a point that says nothing.
TEST_F(SessionReplayTest, cloudsArePlacedWhateverFrameTheyAreIn) {
  constexpr float kHalfTurn = std::numbers::pi_v<float>;
  const std::pair<std::string, Math::Position3D> clouds[] = {
      {"map", {5.0f, 4.0f, 0.3f}}, {"beacon", {-5.0f, -5.0f, 0.3f}}, {"lidar", {1.5f, 0.0f, 0.3f}}};
  for (const auto& [frame, point] : clouds) {
    const Math::Position3D lamp(point.x + 1.0f, point.y + 1.0f, 2.5f);
    {
      BagWriter bag(path);
      const auto tf = bag.addTopic(makeBagTopic("/tf", tf2_msgs::TFMessage::getType()));
      const auto points = bag.addTopic(makeBagTopic("/cloud", sensor_msgs::PointCloud2::getType()));
      bag.write(tf, 1,
                tf2_msgs::TFMessage{{frameOf("map", "odom", {1.0f, 0.0f, 0.0f}),
                                     frameOf("odom", "base_link", {4.0f, 2.0f, kHalfTurn / 2}),
                                     frameOf("map", "beacon", {0.0f, -1.0f, kHalfTurn}),
                                     frameOf("base_link", "lidar", {0.5f, 0.0f, 0.0f})}});
      for (const std::uint64_t time : {2, 3})
        bag.write(points, time, cloudOf(frame, {point, lamp, {}}));
    }
    SessionReplay replay(path);
    replay.begin();
    while (replay.getSession().step()) {
    }
    const auto records = session::recordsOf(replay.look());
    ASSERT_EQ(records.size(), 1u) << frame;
    ASSERT_EQ(records[0].points.size(), 1u) << frame;
    EXPECT_NEAR(records[0].points[0].x, 2.0f, 0.02f) << frame;
    EXPECT_NEAR(records[0].points[0].y, 0.0f, 0.02f) << frame;
  }
}

// The first clouds come before the robot is placed: where it was first is known from the start.
// From 61 s on nothing comes for minutes.
TEST_F(SessionReplayTest, aTopicThatBeginsAfterAMinuteIsPlayedToo) {
  {
    BagWriter bag(path);
    const auto tf = bag.addTopic(makeBagTopic("/tf", tf2_msgs::TFMessage::getType()));
    const auto early = bag.addTopic(makeBagTopic("/early", sensor_msgs::PointCloud2::getType()));
    const auto late = bag.addTopic(makeBagTopic("/late", sensor_msgs::PointCloud2::getType()));
    const auto odometry = bag.addTopic(makeBagTopic("/odom", nav_msgs::Odometry::getType()));
    bag.addTopic(makeBagTopic("/never", sensor_msgs::PointCloud2::getType()));
    nav_msgs::Odometry moving;
    moving.child_frame_id = "base_link";
    moving.pose.pose.orientation.w = 1.0;
    moving.twist.twist.linear.x = 0.5;
    for (const std::uint64_t second : {1, 40, 50, 60, 700}) {
      if (second == 700) bag.write(odometry, second * kSecond, moving);
      const auto x = static_cast<float>(second);
      for (const std::uint64_t time : {second * kSecond, second * kSecond + kSecond / 2})
        bag.write(second > 55 ? late : early, time, cloudOf("odom", {{x + 2.0f, 0.0f, 0.5f}}));
      bag.write(tf, second * kSecond + kSecond,
                tf2_msgs::TFMessage{{frameOf("odom", "base_link", {x, 0.0f, 0.0f})}});
    }
  }
  SessionReplay replay(path);
  replay.begin();
  EXPECT_THAT(replay.getSession().getManager().getSensorList(),
              testing::ElementsAre("early", "late"));
  std::map<std::string, std::vector<float>> met;
  while (replay.getSession().step()) {
    for (const auto& record : session::recordsOf(replay.look()))
      if (!record.points.empty()) met[record.sensorName].push_back(record.points[0].x);
  }
  ASSERT_THAT(met, testing::UnorderedElementsAre(testing::Key("early"), testing::Key("late")));
  EXPECT_NEAR(met["early"][0], 2.0f, 0.01f);
  EXPECT_EQ(replay.look().velocity.x, 0.5f);
  EXPECT_EQ(session::inSeconds(replay.getTime()), 62.0);
}

// A chunk that was damaged took it away.
TEST_F(SessionReplayTest, aSnapshotWithMissingPointsIsSkipped) {
  int changed = 0;
  copyBag(porterSession(10), copy, true, [&](const BagTopic& topic, Bytes& data) {
    if (topic.name != "/DepthCamera/image_points" || ++changed != 5) return;
    auto points = fromCdr<qv_msgs::ImagePoints>(data);
    points.image_time += 1;
    data = toCdr(points);
  });
  EXPECT_GT(changed, 5);
  const auto comparison = compareSession(copy);
  EXPECT_EQ(comparison.looks, 9);
  EXPECT_EQ(comparison.leftOut, 1u);
  EXPECT_EQ(comparison.difference, "");
}

// A few bytes in a file must not take many in memory.
TEST_F(SessionReplayTest, noMoreIsReadAheadThanThereIsRoomFor) {
  // Returns true if it has changed the message.
  using Change = std::function<bool(Bytes&)>;
  const auto fillKeys = [](Bytes& data) {
    auto inputs = fromCdr<qv_msgs::Inputs>(data);
    inputs.new_keys.push_back(std::string(17'000'000, 'x'));
    data = toCdr(inputs);
    return true;
  };
  const auto repeatKey = [](Bytes& data) {
    auto inputs = fromCdr<qv_msgs::Inputs>(data);
    inputs.new_keys.assign(1000, std::string(10'000, 'x'));
    inputs.keys.assign(3000, 999);
    inputs.raised.assign(3000, 0);
    inputs.types.assign(3000, 0);
    data = toCdr(inputs);
    return true;
  };
  const auto repeatCloud = [](Bytes& data) {
    auto records = fromCdr<qv_msgs::Records>(data);
    const auto ofCloud =
        std::ranges::find_if(records.records, [](const auto& r) { return !r.cloud.empty(); });
    if (ofCloud == records.records.end()) return false;
    records.records.assign(100'000, qv_msgs::MetricalData(*ofCloud));
    data = toCdr(records);
    return true;
  };
  const auto pad = [](Bytes& data) {
    data.resize(70'000'000);
    return true;
  };
  const std::tuple<const char*, Change, const char*> cases[] = {
      {"/qv/inputs", fillKeys, "names of keys of up to 16 MB expected, the message has more"},
      {"/qv/inputs", repeatKey, "inputs: names of up to 16 MB expected, the message has more"},
      {"/qv/records", repeatCloud, "up to 536870912 bytes that wait expected, more given"},
      {"/qv/commands", pad, "up to 67108864 bytes expected, 70000000 given"}};
  for (const auto& [name, change, expected] : cases) {
    bool isChanged = false;
    copyBag(porterSession(10), copy, true, [&](const BagTopic& topic, Bytes& data) {
      if (topic.name == name && !isChanged) isChanged = change(data);
    });
    EXPECT_THAT(troubleOf(copy), HasSubstr(expected));
  }
}

TEST_F(SessionReplayTest, anUnplayableRecordingIsRefusedWithTheReason) {
  { BagWriter(path).addTopic(makeBagTopic("/text", std_msgs::String::getType())); }
  EXPECT_THAT([&] { SessionReplay replay(path); },
              testing::ThrowsMessage<std::runtime_error>(StartsWith(
                  path + ": a topic of LaserScan, Range, a depth Image or PointCloud2")));
  { BagWriter(path).addMetadata("qv", {{"version", "2"}}); }
  EXPECT_THAT([&] { SessionReplay replay(path); },
              testing::ThrowsMessage<std::runtime_error>(
                  path + ": a recording of version 1 expected, version \"2\" given"));
}

}  // namespace
}  // namespace QV::ros2
