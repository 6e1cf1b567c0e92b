#include "outlets/web/internal/live_messages.h"

#include <cmath>

#include <boost/make_shared.hpp>
#include <gmock/gmock.h>
#include <nlohmann/json.hpp>
#include <opencv2/imgcodecs.hpp>

#include "outlets/internal/base64.h"
#include "outlets/web/internal/map_tiles.h"
#include "outlets/web/internal/page_details.h"
#include "platform/ko/simulated_time.h"
#include "tests/outlets/told_cases.h"

namespace QV::outlets {
namespace {

using nlohmann::json;

session::Snapshot exampleSnapshot() {
  session::Snapshot snapshot;
  snapshot.time = ko::Clock::time_point(ko::Duration(1'500'000'000));
  snapshot.pose = {1.23456f, 2.0f, 0.5f};
  snapshot.faults = {{"Busy", "stuck"}};
  snapshot.route = {{1.0f, 2.0f}, {1.5f, 2.0f}};
  snapshot.people = {{3.0f, 4.0f}};
  snapshot.touches = {{"Bumper", {1.0f, 1.0f}, 0.25}};
  session::SensorState idle{"Idle", "Sonar"};
  idle.trouble = "\xff gone";
  session::SensorState busy{"Busy", "Laser", true};
  busy.subscribers = {"live view", "navigation"};
  busy.rate = 10.0;
  busy.age = 0.1;
  busy.health = {sensor::HealthState::late, ko::Clock::now(), "old", "by itself", 2};
  busy.nearest = 0.7f;
  busy.view = session::SensorState::View{{1.0f, 2.0f, 0.0f}, {0.1f, 5.0f, 1.05f, 15}};
  busy.marks.hits = {{0.12345f, 1.0f, 0.0f}, {NAN, 2.0f, 0.0f}};
  snapshot.sensors = {idle, busy};
  snapshot.unbuilt = {{"Lost", {sensor::HealthState::failing, ko::Clock::now(), "no key", "", 1}}};
  return snapshot;
}

// Where the map is not shifted, what is told is what is there.
TEST(LiveMessages, aPositionKeepsItsSign) {
  const ko::SimulatedTime time;
  session::Snapshot snapshot;
  snapshot.pose = {-0.0f, -0.0f, -0.0f};
  snapshot.goal = Math::Position2D(-0.0f, -0.0f);
  snapshot.route = snapshot.people = {{-0.0f, -0.0f}};
  snapshot.touches = {{"Bumper", {-0.0f, -0.0f}, 0.25}};
  session::SensorState sensor{"Busy", "Laser", true};
  sensor.marks.hits = {{-0.0f, -0.0f, -0.0f}};
  snapshot.sensors = {sensor};
  const json state = json::parse(pageStateOf(snapshot));
  for (const char* place : {"/pose", "/goal", "/route/0", "/people/0", "/sensors/0/points"}) {
    for (const json& number : state.at(json::json_pointer(place)))
      EXPECT_TRUE(std::signbit(number.get<double>())) << place;
  }
  EXPECT_TRUE(std::signbit(state["touches"][0]["x"].get<double>()));
  const json space = json::parse(spaceMessage(snapshot));
  const json& points = space.at("sensors").at(0).at("points");
  ASSERT_FALSE(points.empty());
  for (const json& number : points) EXPECT_TRUE(std::signbit(number.get<double>()));
}

TEST(LiveMessages, aStateHasNullForMissingValues) {
  const ko::SimulatedTime time;
  const json state = json::parse(pageStateOf(exampleSnapshot()));
  EXPECT_EQ(state["op"], "state");
  EXPECT_EQ(state["time"], 1'500'000'000);
  EXPECT_EQ(state["pose"]["x"], 1.235);
  EXPECT_EQ(state["goal"], nullptr);
  EXPECT_EQ(state["faults"], json::parse(R"({"Busy":"stuck"})"));
  EXPECT_EQ(state["route"], json::parse("[[1.0,2.0],[1.5,2.0]]"));
  EXPECT_EQ(state["people"], json::parse("[[3.0,4.0]]"));
  EXPECT_EQ(state["touches"], json::parse(R"([{"name":"Bumper","x":1.0,"y":1.0,"since":0.25}])"));
  EXPECT_EQ(state["unbuilt"]["Lost"]["reason"], "no key");
  EXPECT_EQ(state["sensors"][0]["age"], nullptr);
  EXPECT_EQ(state["sensors"][0]["trouble"], "\xef\xbf\xbd gone");
  EXPECT_EQ(state["sensors"][0]["fieldOfView"], nullptr);
  EXPECT_EQ(state["sensors"][1], json::parse(R"({
    "name":"Busy", "family":"Laser", "started":true, "enabled":true, "diagnosis":true,
    "subscribers":["live view","navigation"], "rate":10.0, "age":0.1, "nearest":0.7, "trouble":"", "troubleAge":0.0,
    "health":{"state":"late","reason":"old","remedy":"by itself","since":0.0,"times":2},
    "fieldOfView":{"x":1.0,"y":2.0,"theta":0.0,"angle":1.05,"minRange":0.1,"maxRange":5.0},
    "means":"scan",
    "points":[0.123,1.0,null,2.0]})"));
}

TEST(LiveMessages, pagePointsFollowTheKindsPointMeaning) {
  for (const auto& told : test::toldCases()) {
    const json sensor = json::parse(pageStateOf(test::snapshotOf(told, "Cliff")))["sensors"][0];
    const json& points = sensor["points"];
    const bool isEcho = sensor["means"] == "arc" && !told.marks.empty();
    ASSERT_EQ(points.size(), 2 * (isEcho ? test::kArcPoints : told.marks.size())) << told.name;
    for (std::size_t i = 0; i < told.marks.size(); ++i) {
      EXPECT_NEAR(points[2 * i], told.marks[i].x, 1e-3) << told.name;
      EXPECT_NEAR(points[2 * i + 1], told.marks[i].y, 1e-3) << told.name;
    }
  }
}

TEST(LiveMessages, logLinesCarryLevelAndMethod) {
  const ko::log::Record line{ko::log::Level::verbose, "A.B", "c", "text", {}};
  EXPECT_EQ(json::parse(logMessage({line})), json::parse(R"({"op":"log","lines":[
    {"time":0,"level":"verbose","category":"A.B","method":"c","message":"text"}]})"));
}

TEST(Base64, padsAndEncodesAnyByte) {
  EXPECT_EQ(toBase64(""), "");
  EXPECT_EQ(toBase64("a"), "YQ==");
  EXPECT_EQ(toBase64("ab"), "YWI=");
  EXPECT_EQ(toBase64(std::string("\0\xff\x10", 3)), "AP8Q");
}

/** A tile decoded; empty if there is none. */
cv::Mat_<uchar> tileOf(const MapTiles& tiles, const std::string& path) {
  const auto png = tiles.find(path);
  if (!png) return {};
  return cv::imdecode(std::vector<uchar>(png->begin(), png->end()), cv::IMREAD_UNCHANGED);
}

TEST(MapTiles, haveTheLastRowOnTop) {
  const MapTiles sut(boost::make_shared<OccupancyMap>(2, 2, 0.1f, Math::Pose2D(),
                                                      std::vector<float>{0.0f, 1.0f, 0.5f, 0.0f}));
  EXPECT_EQ(sut.getLevelCount(), 1);
  const auto tile = tileOf(sut, "/map/0/0/0.png");
  EXPECT_EQ(cv::norm(tile, cv::Mat_<uchar>({2, 2}, {205, 254, 254, 0})), 0.0);
  for (const char* path : {"/map/1/0/0.png", "/map/0/1/0.png", "/map/0/0/1.png", "/map/0/0/0",
                           "/map/-1/0/0.png", "/map/0/99999/99999.png", "/map/999/0/0.png"}) {
    EXPECT_EQ(sut.find(path), std::nullopt) << path;
  }
  EXPECT_EQ(MapTiles(nullptr).find("/map/0/0/0.png"), std::nullopt);
}

TEST(MapTiles, aWallOfOneCellIsSeenOnEveryLevel) {
  const auto map = boost::make_shared<OccupancyMap>(1301, 700, 0.1f, Math::Pose2D(), 0.0f);
  map->setOccupancy(1300, 699, 1.0f);
  const MapTiles sut(map);
  ASSERT_EQ(sut.getLevelCount(), 3);
  const cv::Size sizes[] = {{277, 188}, {139, 350}, {326, 175}};
  const char* paths[] = {"/map/0/2/1.png", "/map/1/1/0.png", "/map/2/0/0.png"};
  for (int level = 0; level < 3; ++level) {
    const auto tile = tileOf(sut, paths[level]);
    EXPECT_EQ(tile.size(), sizes[level]);
    EXPECT_EQ(tile(0, tile.cols - 1), 0);
    EXPECT_EQ(cv::countNonZero(tile), tile.rows * tile.cols - 1);
  }
}

}  // namespace
}  // namespace QV::outlets
