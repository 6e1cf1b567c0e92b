#include "ros2/recording/session_recorder.h"

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <numeric>
#include <sys/resource.h>
#include <unistd.h>

#include <gmock/gmock.h>

#include "platform/ko/log.h"
#include "ros2/bag/bag_reader.h"
#include "ros2/messages/report_msgs.h"
#include "ros2/messages/scene_msgs.h"
#include "ros2/messages/sensor_msgs.h"
#include "ros2/recording/internal/conversions.h"
#include "tests/ros2/recording/recorded_session.h"
#include "tests/session/session_in_room.h"
#include "tests/support/child_process.h"
#include "tests/support/temporary_folder.h"

namespace QV::ros2 {
namespace {

using test::recordSession;

std::string bytesOf(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

/** The last message of each topic, and how many there were. */
struct Contents {
  explicit Contents(const std::string& path) : reader(path) {
    while (const auto message = reader.next()) {
      ++counts[message->topic->name];
      last[message->topic->name] = Bytes(message->data.begin(), message->data.end());
    }
  }
  template <typename Message>
  Message get(const std::string& topic) const {
    return fromCdr<Message>(last.at(topic));
  }

  BagReader reader;
  std::map<std::string, std::size_t> counts;
  std::map<std::string, Bytes> last;
};

/** The frames and times of a message; those of a marker array stand in its markers. */
std::vector<std_msgs::Header> headersOf(const BagMessage& message) {
  std::vector<std_msgs::Header> headers;
  if (message.topic->type == visualization_msgs::MarkerArray::getType().getName()) {
    for (const auto& marker : fromCdr<visualization_msgs::MarkerArray>(message.data).markers)
      headers.push_back(marker.header);
  } else if (message.topic->schema.starts_with("std_msgs/Header header\n")) {
    // The name of the frame ends the header: its length stands after that of CDR and the time.
    std::uint32_t letters = 0;
    std::memcpy(&letters, message.data.data() + 12, sizeof letters);
    headers.push_back(fromCdr<std_msgs::Header>(message.data.first(16 + letters)));
  }
  return headers;
}

/** The recorded transforms, each with its times in nanoseconds. */
class RecordedFrames {
 public:
  explicit RecordedFrames(const std::string& path) {
    BagReader reader(path);
    while (const auto message = reader.next()) {
      if (message->topic->type != tf2_msgs::TFMessage::getType().getName()) continue;
      for (const auto& placed : fromCdr<tf2_msgs::TFMessage>(message->data).transforms) {
        Link& link = links[placed.child_frame_id];
        EXPECT_TRUE(link.parent.empty() || link.parent == placed.header.frame_id);
        link.parent = placed.header.frame_id;
        link.isStatic = message->topic->name == "/tf_static";
        link.times.insert(nanoseconds(placed.header.stamp));
      }
    }
  }

  /** True if transforms around its time, 0.1 s apart at most, lead from its frame to the map. */
  bool connects(const std_msgs::Header& header) const {
    std::string frame = header.frame_id;
    for (std::size_t depth = 0; frame != "map" && depth < links.size(); ++depth) {
      const auto link = links.find(frame);
      if (link == links.end() || !link->second.isKnownAt(nanoseconds(header.stamp))) return false;
      frame = link->second.parent;
    }
    return frame == "map";
  }

 private:
  struct Link {
    bool isKnownAt(std::int64_t time) const {
      const auto after = times.lower_bound(time);
      if (isStatic || (after != times.end() && *after == time)) return true;
      return after != times.begin() && after != times.end() &&
             *after - *std::prev(after) <= 100'000'000;
    }

    std::string parent;
    bool isStatic = false;
    std::set<std::int64_t> times;
  };

  static std::int64_t nanoseconds(const builtin_interfaces::Time& time) {
    return time.sec * std::int64_t{1'000'000'000} + time.nanosec;
  }

  std::map<std::string, Link> links;
};

struct SessionRecorderTest : testing::Test {
  const test::TemporaryFolder folder;
  const std::string path = folder / "run.mcap";
};

TEST_F(SessionRecorderTest, theSameSeedGivesTheSameBytes) {
  for (const std::string& file : {path, folder / "again.mcap"})
    recordSession(*session::openVirtual("porter", test::busyWorld()), file, 5);
  EXPECT_EQ(bytesOf(path), bytesOf(folder / "again.mcap"));
}

TEST_F(SessionRecorderTest, recordsMapFramesMeasurementsAndPointsForOtherTools) {
  const auto session = session::openVirtual("porter", test::busyWorld());
  recordSession(*session, path, 10, [](session::Session&, int cycle) {
    if (cycle == 3) ko::log::warning("Somebody", "test") << "something";
  });
  const Contents sut(path);
  EXPECT_EQ(sut.counts.at("/clock"), 10u);
  EXPECT_EQ(sut.get<rcl_interfaces::Log>("/rosout").msg, "something");

  const auto map = sut.get<nav_msgs::OccupancyGrid>("/map");
  EXPECT_EQ(map.data.size(), session->getMap()->getCells().size());
  EXPECT_EQ(map.info.resolution, session->getMap()->getResolution());

  const auto scan = sut.get<sensor_msgs::LaserScan>("/FrontLaser/scan");
  EXPECT_EQ(scan.ranges.size(), 15u);
  EXPECT_FLOAT_EQ(scan.angle_min, -0.525f);
  const auto points = session->getManager().getMetricalData("FrontLaser").front().points;
  ASSERT_FALSE(points.empty());
  EXPECT_THAT(scan.ranges,
              testing::Contains(testing::FloatEq(std::hypot(points.front().x, points.front().y))));

  EXPECT_EQ(sut.get<sensor_msgs::Range>("/FrontSonar/range").max_range, 4.0f);
  const auto info = sut.get<sensor_msgs::CameraInfo>("/DepthCamera/camera_info");
  EXPECT_NEAR(2.0 * std::atan(0.5 * info.width / info.k[0]), 1.02, 1e-6);
  const auto image = sut.get<sensor_msgs::Image>("/DepthCamera/image");
  EXPECT_EQ(image.data.size(), std::size_t{2} * image.width * image.height);
  EXPECT_FALSE(sut.get<vision_msgs::Detection3DArray>("/people").detections.empty());
  EXPECT_GT(sut.get<visualization_msgs::MarkerArray>("/people_markers").markers.size(), 1u);

  const auto frames = sut.get<tf2_msgs::TFMessage>("/tf").transforms;
  EXPECT_EQ(frames.at(0).header.frame_id, "map");
  EXPECT_EQ(frames.at(1).child_frame_id, "base");
  const auto mounted = sut.get<tf2_msgs::TFMessage>("/tf_static").transforms;
  EXPECT_THAT(mounted, testing::Contains(testing::Field(
                           &geometry_msgs::TransformStamped::child_frame_id, "FrontLaser")));
  const auto views = sut.get<visualization_msgs::MarkerArray>("/fields_of_view").markers;
  EXPECT_THAT(views,
              testing::Contains(testing::Field(&visualization_msgs::Marker::ns, "FrontLaser")));
  EXPECT_GT(sut.get<sensor_msgs::PointCloud2>("/FrontLaser/points").width, 0u);
  EXPECT_EQ(sut.counts.at("/qv/records"), 10u);

  const auto runs = sut.get<qv_msgs::ImagePoints>("/DepthCamera/image_points");
  EXPECT_EQ(runs.image, "/DepthCamera/image");
  std::size_t all = 0;
  for (const auto& record : session->getManager().getMetricalData("DepthCamera"))
    all += record.points.size();
  EXPECT_EQ(std::accumulate(runs.lengths.begin(), runs.lengths.end(), std::size_t{0}), all);
  const auto shown = sut.get<sensor_msgs::PointCloud2>("/DepthCamera/points");
  EXPECT_EQ(shown.header.stamp,
            stampOf(session->getManager().getMetricalData("DepthCamera").front().timestamp));
  EXPECT_GT(shown.width, all / 20);
  EXPECT_LT(shown.width, all / 12);
}

TEST_F(SessionRecorderTest, aShiftedMapHasTheCoordinatesOfItsFileAsAFrame) {
  auto options = test::inRoom({2.0f, 3.0f, 0.0f});
  const auto map = test::makeRoom();
  options.map = map;
  for (const bool isVirtual : {false, true}) {
    std::size_t mountings = 0;
    for (const bool isShifted : {false, true}) {
      map->setShift(isShifted ? MapShift{450'000.125, 5'400'000.0} : MapShift());
      recordSession(*(isVirtual ? session::openVirtual("porter", options)
                                : session::openSimulated(0, options)),
                    path, 1);
      const Contents sut(path);
      const auto& metadata = sut.reader.getMetadata();
      EXPECT_EQ(std::ranges::any_of(
                    metadata, [](const auto& facts) { return facts.values.contains("shift_x"); }),
                isShifted);
      EXPECT_EQ(sut.last.contains("/tf_static"), isShifted || isVirtual);
      if (!sut.last.contains("/tf_static")) continue;
      // A reader that comes later gets one message.
      EXPECT_EQ(sut.counts.at("/tf_static"), 1u);
      const auto links = sut.get<tf2_msgs::TFMessage>("/tf_static").transforms;
      if (!isShifted) mountings = links.size();
      if (!isShifted) continue;
      EXPECT_EQ(links.size(), mountings + 1);
      const auto& link = links.at(0);
      EXPECT_EQ(link.header.frame_id, "map");
      EXPECT_EQ(link.child_frame_id, "utm");
      EXPECT_EQ(link.transform.translation.x, -450'000.125);
      EXPECT_EQ(link.transform.translation.y, -5'400'000.0);
    }
  }
}

// A viewer does not draw what it can't place.
TEST_F(SessionRecorderTest, everyMessageIsInAFrameThatIsConnectedToTheMapAtItsTime) {
  for (const bool isVirtual : {true, false}) {
    const auto session =
        isVirtual ? session::openVirtual("porter", test::busyWorld()) : session::openSimulated(1);
    if (!isVirtual) session->setPose({3.0f, 2.0f, 0.5f});
    recordSession(*session, path, 8, [](session::Session& robot, int) { robot.drive(0.3f, 0.4f); });
    for (const auto& view :
         Contents(path).get<visualization_msgs::MarkerArray>("/fields_of_view").markers)
      EXPECT_LT(std::hypot(view.pose.position.x, view.pose.position.y), 1.0) << view.ns;
    const RecordedFrames sut(path);
    std::set<std::string> placed;
    BagReader reader(path);
    while (const auto message = reader.next()) {
      for (const auto& header : headersOf(*message)) {
        placed.insert(message->topic->name);
        EXPECT_TRUE(sut.connects(header))
            << message->topic->name << " in \"" << header.frame_id << "\" at " << header.stamp.sec
            << " s " << header.stamp.nanosec << " ns";
      }
    }
    EXPECT_THAT(placed, testing::IsSupersetOf({"/map", "/odom", "/fields_of_view"}));
    EXPECT_GT(placed.size(), isVirtual ? 20u : 8u);
  }
}

TEST_F(SessionRecorderTest, aFullDiskEndsTheRecordingWithOneErrorButNotTheRun) {
  std::vector<std::string> errors;
  const ko::log::ScopedSink sink(
      ko::log::Level::error, [&](const ko::log::Record& line) { errors.push_back(line.message); });
  test::ChildProcess process;
  process.start([&] {
    const rlimit most{200'000, 200'000};
    setrlimit(RLIMIT_FSIZE, &most);
    std::signal(SIGXFSZ, SIG_IGN);
    const auto own = session::openVirtual("porter", test::busyWorld());
    errors.clear();
    SessionRecorder recorder(path, *own);
    own->subscribe("test", own->getManager().getFamilyNames());
    for (int i = 0; i < 10; ++i) {
      own->run(boost::chrono::milliseconds(100));
      recorder.show(own->look());
    }
    recorder.finish();
    const bool isTold =
        errors.size() == 1 && errors[0].find("the session continues") != std::string::npos;
    _exit(recorder.hasFailed() && isTold ? 0 : 1);
  });
  EXPECT_EQ(process.awaitEnd(), 0);
  EXPECT_GT(readBagInfo(path).count, 20u);
}

// Few messages and small ones: only time has them written.
TEST_F(SessionRecorderTest, afterAKillOnlyTheLastSecondsAreMissing) {
  test::ChildProcess process;
  process.start([&] {
    const auto own = session::openSimulated(1);
    SessionRecorder recorder(path, *own);
    own->subscribe("test", {"Sonar"});
    for (int i = 0; i < 50; ++i) {
      own->run(boost::chrono::milliseconds(100));
      recorder.show(own->look());
    }
    pause();
  });
  const auto looksIn = [&] {
    const Contents contents(path);
    return contents.counts.contains("/qv/records") ? contents.counts.at("/qv/records") : 0;
  };
  while (!std::filesystem::exists(path) || std::filesystem::file_size(path) < 100) continue;
  const auto start = std::chrono::steady_clock::now();
  while (looksIn() < 29 && std::chrono::steady_clock::now() - start < std::chrono::seconds(60))
    continue;
  process.signal(SIGKILL);
  process.awaitEnd();
  EXPECT_GE(looksIn(), 29u);
  EXPECT_EQ(test::compareSession(path).difference, "");
}

TEST_F(SessionRecorderTest, theWorldAndFaultsSetBeforehandAreRecorded) {
  auto options = test::busyWorld();
  options.faults = {robot::parseFault("FrontSonar:off@1-2")};
  recordSession(*session::openVirtual("porter", options), path, 0);

  BagReader reader(path);
  std::vector<qv_msgs::Command> commands;
  while (const auto message = reader.next()) {
    if (message->topic->name == "/qv/commands")
      commands.push_back(fromCdr<qv_msgs::Command>(message->data));
  }
  ASSERT_FALSE(commands.empty());
  EXPECT_EQ(commands[0], (qv_msgs::Command{"fault off", "", {"FrontSonar"}, true, {1.0, 2.0}}));
  const auto isWorld = [](const auto& metadata) { return metadata.name == "qv_world"; };
  const auto world = std::ranges::find_if(reader.getMetadata(), isWorld);
  ASSERT_NE(world, reader.getMetadata().end());
  EXPECT_EQ(world->values.at("seed"), "7");
  EXPECT_EQ(world->values.at("random_people"), "2");
}

TEST_F(SessionRecorderTest, eachChangeOfHealthIsRecordedAsDiagnostics) {
  auto options = test::busyWorld();
  options.faults = {robot::parseFault("FrontLaser:delayed"), robot::parseFault("BackSonar:off")};
  const auto session = session::openVirtual("porter", options);
  session->getManager().logTrouble("Lost", "Navigation.Test", "build", "no key");
  recordSession(*session, path, 25);
  const Contents sut(path);

  EXPECT_THAT(sut.counts.at("/diagnostics"), testing::AllOf(testing::Gt(1u), testing::Lt(10u)));
  std::map<std::string, diagnostic_msgs::DiagnosticStatus> told;
  for (auto& status : sut.get<diagnostic_msgs::DiagnosticArray>("/diagnostics").status)
    told[status.name] = status;
  EXPECT_EQ(told.at("FrontSonar").level, std::byte{0});
  EXPECT_EQ(told.at("FrontSonar").message, "sound: its records are fresh");
  EXPECT_EQ(told.at("FrontLaser").level, std::byte{1});
  EXPECT_THAT(told.at("FrontLaser").message, testing::StartsWith("late: its record is 0."));
  EXPECT_EQ(told.at("BackSonar").level, std::byte{2});
  EXPECT_THAT(told.at("BackSonar").message, testing::StartsWith("silent: no fresh record since "));
  std::vector<std::string> keys;
  for (const auto& value : told.at("BackSonar").values) keys.push_back(value.key);
  EXPECT_THAT(keys, testing::ElementsAre("remedy", "since", "times"));
  EXPECT_THAT(told.at("BackSonar").values.at(1).value,
              testing::MatchesRegex("[0-9]\\.[0-9] s ago"));
  EXPECT_EQ(told.at("Lost").message, "failing: it could not be built: no key");
}

}  // namespace
}  // namespace QV::ros2
