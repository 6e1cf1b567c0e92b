#include "outlets/foxglove/internal/foxglove_feed.h"

#include "outlets/foxglove/internal/foxglove_messages.h"
#include "tests/outlets/fake_client.h"
#include "tests/outlets/told_cases.h"
#include "tests/session/session_in_room.h"
#include "tests/support/vocabulary.h"

namespace QV::outlets {
namespace {

using nlohmann::json;
using testing::Pair;

/** A viewer of a robot with two sonars, channels 4 and 5. */
struct FoxgloveFeedTest : testing::Test {
  FoxgloveFeedTest() {
    sut.onOpen(viewer);
    opening = viewer->takeTexts();
  }

  std::vector<json> say(const std::string& message) {
    sut.onMessage(viewer, message, false);
    return viewer->takeTexts();
  }
  std::string errorTo(const std::string& message) {
    const auto answers = say(message);
    return answers.size() == 1 ? answers[0].value("message", "") : "";
  }
  session::Snapshot snapshot() {
    session::Snapshot snapshot;
    snapshot.time = ko::Clock::time_point(ko::Duration(0x0102030405060708));
    for (const std::string& name : robot->getManager().getSensorList()) {
      snapshot.sensors.push_back({name, "Sonar"});
      snapshot.sensors.back().marks.hits = {{1.0f, 2.0f, 0.5f}};
    }
    return snapshot;
  }

  const std::unique_ptr<session::Session> robot =
      session::openSimulated(0, test::inRoom({2.0f, 3.0f, 0.0f}));
  FoxgloveFeed sut{*robot};
  const std::shared_ptr<test::FakeClient> viewer = std::make_shared<test::FakeClient>();
  std::vector<json> opening;
};

TEST_F(FoxgloveFeedTest, advertisesEveryChannelWithItsSchema) {
  ASSERT_EQ(opening.size(), 2u);
  EXPECT_EQ(opening[0]["op"], "serverInfo");
  EXPECT_EQ(opening[1]["op"], "advertise");
  std::vector<std::string> topics;
  for (const json& channel : opening[1]["channels"]) {
    topics.push_back(channel["topic"]);
    EXPECT_EQ(channel["encoding"], "json");
    const json schema = json::parse(channel["schema"].get<std::string>());
    EXPECT_TRUE(schema["properties"].contains("timestamp") ||
                schema["properties"].contains("entities"));
  }
  EXPECT_THAT(topics, ElementsAre("/tf", "/map", "/log", "/sensors/LeftSonar",
                                  "/sensors/RightSonar", "/fields_of_view"));
}

TEST_F(FoxgloveFeedTest, sendsMessagesForASubscriptionUntilItEnds) {
  EXPECT_TRUE(say(R"({"op":"subscribe","subscriptions":[{"id":258,"channelId":5}]})").empty());
  EXPECT_TRUE(sut.isWatched());
  EXPECT_THAT(sut.getDemand(), ElementsAre(Pair("foxglove viewer 1", ElementsAre("RightSonar"))));
  sut.show(snapshot());
  ASSERT_EQ(viewer->sent.size(), 1u);
  const WebMessage message = viewer->sent[0];
  EXPECT_TRUE(message.binary);
  EXPECT_EQ(message.delivery, Delivery::latest);
  EXPECT_EQ(message.payload->substr(0, 13),
            std::string("\x01\x02\x01\x00\x00\x08\x07\x06\x05\x04\x03\x02\x01", 13));
  const json cloud = json::parse(message.payload->substr(13));
  EXPECT_EQ(cloud["frame_id"], "map");
  EXPECT_EQ(cloud["data"], "AACAPwAAAEAAAAA/");  // 1, 2 and 0.5.
  viewer->sent.clear();
  EXPECT_TRUE(say(R"({"op":"unsubscribe","subscriptionIds":[258]})").empty());
  sut.show(snapshot());
  EXPECT_TRUE(viewer->sent.empty());
  EXPECT_FALSE(sut.isWatched());
}

TEST_F(FoxgloveFeedTest, aMapThatIsTakenAgainAndAgainWaitsOnce) {
  Outbox unread;
  for (int id = 1; id <= 3; ++id) {
    const std::string text = std::to_string(id);
    sut.onMessage(viewer,
                  R"({"op":"subscribe","subscriptions":[{"id":)" + text + R"(,"channelId":2}]})",
                  false);
    sut.onMessage(viewer, R"({"op":"unsubscribe","subscriptionIds":[)" + text + "]}", false);
  }
  ASSERT_EQ(viewer->sent.size(), 3u);
  for (const WebMessage& map : viewer->sent) unread.add(map);
  EXPECT_EQ(unread.take()->payload, viewer->sent[2].payload);
  EXPECT_FALSE(unread.take());
}

TEST_F(FoxgloveFeedTest, aShiftedMapHasTheCoordinatesOfItsFileAsAFrame) {
  boost::const_pointer_cast<OccupancyMap>(robot->getMap())->setShift({450'000.125, 5'400'000.0});
  sut.onMessage(viewer, R"({"op":"subscribe","subscriptions":[{"id":7,"channelId":1}]})", false);
  sut.show(snapshot());
  Outbox unread;
  for (const WebMessage& message : viewer->sent) unread.add(message);
  // A slow viewer's log lines must not take its place.
  for (std::size_t i = 0; i < Outbox::kMostRecent; ++i)
    unread.add({viewer->sent.back().payload, true, Delivery::recent});
  std::set<std::string> children;
  while (const auto message = unread.take()) {
    const json frame = json::parse(message->payload->substr(13));
    children.insert(frame["child_frame_id"]);
    if (frame["child_frame_id"] != "utm") continue;
    EXPECT_EQ(frame["parent_frame_id"], "map");
    EXPECT_EQ(frame["translation"], json::parse(R"({"x":-450000.125,"y":-5400000.0,"z":0.0})"));
  }
  EXPECT_THAT(children, ElementsAre("robot", "utm"));
}

TEST_F(FoxgloveFeedTest, eachViewerWantsItsOwnSensorsUntilItLeaves) {
  const auto other = std::make_shared<test::FakeClient>();
  sut.onOpen(other);
  say(R"({"op":"subscribe","subscriptions":[{"id":1,"channelId":4}]})");
  sut.onMessage(other, R"({"op":"subscribe","subscriptions":[{"id":1,"channelId":5}]})", false);
  EXPECT_THAT(sut.getDemand(), ElementsAre(Pair("foxglove viewer 1", ElementsAre("LeftSonar")),
                                           Pair("foxglove viewer 2", ElementsAre("RightSonar"))));
  sut.onClose(viewer);
  EXPECT_THAT(sut.getDemand(), ElementsAre(Pair("foxglove viewer 2", ElementsAre("RightSonar"))));
}

TEST_F(FoxgloveFeedTest, aCloudFollowsThePointMeaningAndTheRobotsPose) {
  for (const auto& told : test::toldCases()) {
    auto seen = test::snapshotOf(told, "Sonar");
    const std::string cloud = foxglove::pointCloud(seen.sensors[0], seen);
    const std::size_t points =
        json::parse(cloud)["data"].get<std::string>().size() / 16;  // 12 bytes in base64.
    const bool isEcho = !seen.sensors[0].marks.echoes.empty();
    EXPECT_EQ(points, isEcho ? test::kArcPoints : told.marks.size()) << told.name;
    // The robot has moved, and where it is the hit is where it was.
    seen.pose.x += 1.0f;
    EXPECT_EQ(foxglove::pointCloud(seen.sensors[0], seen) == cloud, points == 0) << told.name;
  }
}

TEST_F(FoxgloveFeedTest, aFieldOfViewIsAnOutlineFromTheSensorAndBack) {
  auto seen = snapshot();
  seen.sensors[0].view = session::SensorState::View{{1.0f, 2.0f, 0.0f}, {0.1f, 5.0f, 1.0f, 15}};
  EXPECT_TRUE(json::parse(foxglove::fieldsOfView(seen))["entities"].empty()) << "not started";
  seen.sensors[0].started = true;
  const json entities = json::parse(foxglove::fieldsOfView(seen))["entities"];
  ASSERT_EQ(entities.size(), 1u);
  EXPECT_EQ(entities[0]["frame_locked"], false) << "the map does not move";
  const json& points = entities[0]["lines"][0]["points"];
  EXPECT_EQ(points.front(), json::parse(R"({"x":1.0,"y":2.0,"z":0.0})"));
  EXPECT_EQ(points.back(), points.front());
  EXPECT_NEAR(points[13]["x"], 6.0, 1e-3);
  EXPECT_NEAR(points[13]["y"], 2.0, 1e-3);
}

TEST_F(FoxgloveFeedTest, aDepthImageIsItsPixelsInMillimetres) {
  const cv::Mat_<std::uint16_t> depth({1, 3}, {0x0102, 0, 65535});
  const json image = json::parse(foxglove::depthImage(depth, "Camera", {}));
  EXPECT_EQ(image["width"], 3);
  EXPECT_EQ(image["step"], 6);
  EXPECT_EQ(image["data"], "AgEAAP//");
}

TEST(FoxgloveDrive, aViewerDrivesOnlyIfAllowedAndOnItsOwnChannel) {
  const auto robot = session::openSimulated(0, test::inRoom({2.0f, 3.0f, 0.0f}));
  RequestQueue requests;
  FoxgloveFeed driven(*robot, &requests);
  const auto viewer = std::make_shared<test::FakeClient>();
  driven.onOpen(viewer);
  EXPECT_EQ(viewer->takeTexts()[0]["capabilities"], json::parse(R"(["clientPublish"])"));
  const auto errorTo = [&](const std::string& message, bool binary) {
    driven.onMessage(viewer, message, binary);
    const auto answers = viewer->takeTexts();
    return answers.empty() ? "" : answers[0].value("message", "");
  };
  const std::string velocity = std::string("\x01\x07\x00\x00\x00", 5) +
                               R"({"linear":{"x":9,"y":0,"z":0},"angular":{"x":0,"y":0,"z":-0.5}})";
  EXPECT_EQ(errorTo(velocity, true), "channel 7 is not advertised");
  EXPECT_EQ(errorTo(R"({"op":"advertise","channels":[{"id":7,"topic":"/cmd_vel","encoding":"json",
                        "schemaName":"geometry_msgs/Twist"}]})",
                    false),
            "");
  EXPECT_EQ(errorTo(velocity, true), "");
  const auto taken = requests.takeUntil(std::chrono::steady_clock::now());
  ASSERT_EQ(taken.size(), 1u);
  const auto drive = std::get<session::DriveCommand>(taken[0].command);
  EXPECT_EQ(drive.forward, 2.0f) << "no faster than it may";
  EXPECT_EQ(drive.turn, -0.5f);
  EXPECT_EQ(errorTo(std::string("\x01\x07\x00\x00\x00{}", 7), true), "linear: missing");
  EXPECT_EQ(errorTo("\x01\x07", true), "a message of a channel expected, other bytes given");
  json channels;
  for (std::uint32_t id = 7; id <= 7 + foxglove::Viewers::kMostWheels; ++id)
    channels.push_back({{"id", id}, {"encoding", "json"}, {"schemaName", "geometry_msgs/Twist"}});
  EXPECT_EQ(errorTo(json{{"op", "advertise"}, {"channels", channels}}.dump(), false),
            "channel 71: too many channels are advertised");

  FoxgloveFeed shown(*robot);
  shown.onOpen(viewer);
  viewer->sent.clear();
  shown.onMessage(viewer, R"({"op":"advertise","channels":[{"id":7,"encoding":"json",
                              "schemaName":"geometry_msgs/Twist"}]})",
                  false);
  EXPECT_EQ(viewer->takeTexts()[0]["message"], "viewers may not drive here: see --viewer-drive");
}

TEST_F(FoxgloveFeedTest, theMapComesOnceAndTheLogLineByLine) {
  sut.onMessage(
      viewer,
      R"({"op":"subscribe","subscriptions":[{"id":1,"channelId":2},{"id":2,"channelId":3}]})",
      false);
  sut.show(snapshot());
  sut.show(snapshot());
  sut.showLog({{ko::log::Level::error, "A", "b", "c", {}}, {ko::log::Level::info, "", "", "", {}}});
  ASSERT_EQ(viewer->sent.size(), 3u);
  const json grid = json::parse(viewer->sent[0].payload->substr(13));
  EXPECT_EQ(grid["column_count"], robot->getMap()->getWidth());
  const json line = json::parse(viewer->sent[1].payload->substr(13));
  EXPECT_EQ(line["level"], 4);
  EXPECT_EQ(line["name"], "A.b");
}

TEST_F(FoxgloveFeedTest, answersInvalidRequestsWithAStatusMessage) {
  EXPECT_EQ(errorTo("?"),
            "\"op\": subscribe, unsubscribe, advertise or unadvertise expected, null given");
  EXPECT_EQ(errorTo(R"({"op":"subscribe"})"), "subscriptions: an array expected");
  EXPECT_EQ(errorTo(R"({"op":"subscribe","subscriptions":[7]})"), "id: missing");
  EXPECT_EQ(errorTo(R"({"op":"subscribe","subscriptions":[{"id":-1,"channelId":1}]})"),
            "a number of 32 bits expected, -1 given");
  EXPECT_EQ(errorTo(R"({"op":"subscribe","subscriptions":[{"id":1,"channelId":7}]})"),
            "channel 7 does not exist");
  EXPECT_EQ(errorTo(R"({"op":"unsubscribe","subscriptionIds":[3]})"),
            "subscription 3 does not exist");
  say(R"({"op":"subscribe","subscriptions":[{"id":1,"channelId":1}]})");
  EXPECT_EQ(errorTo(R"({"op":"subscribe","subscriptions":[{"id":1,"channelId":2}]})"),
            "subscription 1 is in use");
  EXPECT_EQ(errorTo(R"({"op":"subscribe","subscriptions":[{"id":2,"channelId":1}]})"),
            "channel 1 is subscribed to already");
  EXPECT_EQ(errorTo(R"({"op":"subscribe","subscriptions":[7,{"id":2,"channelId":5}]})"),
            "id: missing");
  EXPECT_THAT(sut.getDemand(), ElementsAre(Pair("foxglove viewer 1", ElementsAre("RightSonar"))))
      << "what is right is done";
}

}  // namespace
}  // namespace QV::outlets
