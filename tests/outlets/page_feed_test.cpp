#include "outlets/web/internal/page_feed.h"

#include "outlets/outlet.h"
#include "outlets/web/internal/page_details.h"
#include "session/usage_error.h"
#include "tests/outlets/fake_client.h"
#include "tests/session/session_in_room.h"
#include "tests/support/log_capture.h"
#include "tests/support/vocabulary.h"

namespace QV::outlets {
namespace {

using testing::Pair;

constexpr char kSubscribe[] = R"({"op":"subscribe","sensor":"LeftSonar","on":true})";
constexpr char kUnsubscribe[] = R"({"op":"subscribe","sensor":"LeftSonar","on":false})";

/** Two pages of a robot with two sonars. */
struct PageFeedTest : testing::Test {
  const std::unique_ptr<session::Session> robot =
      session::openSimulated(0, test::inRoom({2.0f, 3.0f, 0.0f}));
  RequestQueue requests;
  PageFeed sut{*robot, requests};
  const std::shared_ptr<test::FakeClient> first = std::make_shared<test::FakeClient>();
  const std::shared_ptr<test::FakeClient> second = std::make_shared<test::FakeClient>();
};

TEST_F(PageFeedTest, aPageGetsItsSubscriberNameAndTheFamilyColours) {
  sut.onOpen(first);
  sut.onOpen(second);
  EXPECT_EQ(first->takeTexts()[0]["subscriber"], "page 1");
  const auto hello = second->takeTexts()[0];
  EXPECT_EQ(hello["subscriber"], "page 2");
  EXPECT_EQ(hello["colours"], nlohmann::json::parse(R"({"Sonar":"#d55e00"})"));
  EXPECT_EQ(hello["depthSensor"], nullptr);
}

TEST_F(PageFeedTest, aSubscriptionBelongsToItsPageAndEndsWithIt) {
  sut.onOpen(first);
  sut.onOpen(second);
  for (const auto& page : {first, second}) sut.onMessage(page, kSubscribe, false);
  sut.onMessage(second, kUnsubscribe, false);
  EXPECT_THAT(sut.getDemand(),
              ElementsAre(Pair("page 1", ElementsAre("LeftSonar")), Pair("page 2", IsEmpty())));
  sut.onClose(first);
  EXPECT_THAT(sut.getDemand(), ElementsAre(Pair("page 2", IsEmpty())));
  sut.onOpen(first);
  EXPECT_THAT(sut.getDemand(), ElementsAre(Pair("page 2", IsEmpty()), Pair("page 3", IsEmpty())));
  sut.onClose(first);
  sut.onClose(second);
  EXPECT_FALSE(sut.isWatched());
}

TEST_F(PageFeedTest, detailsGoToThePageThatAsksForThem) {
  sut.onOpen(first);
  sut.onOpen(second);
  const auto opsOf = [](test::FakeClient& page) {
    std::vector<std::string> ops;
    for (const auto& message : page.takeTexts()) ops.push_back(message["op"]);
    return ops;
  };
  opsOf(*first);
  opsOf(*second);
  sut.onMessage(first, R"({"op":"inspect","sensor":"LeftSonar"})", false);
  sut.onMessage(second, R"({"op":"space","on":true})", false);
  session::Snapshot snapshot;
  snapshot.sensors = {{"LeftSonar", "Sonar"}};
  auto& sensor = snapshot.sensors[0];
  sensor.records.resize(1);
  sensor.records[0].points.assign(kMostRecordPoints + 7, {1.0f, 2.0f, 3.0f});
  sensor.marks.hits.assign(kMostSpacePoints + 1, {1.0f, 2.0f, 3.0f});
  sut.show(snapshot);
  EXPECT_THAT(first->sent, SizeIs(2));
  const auto record = nlohmann::json::parse(*first->sent[1].payload)["records"][0];
  EXPECT_EQ(record["points"].size(), kMostRecordPoints);
  EXPECT_EQ(record["pointCount"], kMostRecordPoints + 7);
  const auto space = nlohmann::json::parse(*second->sent[1].payload)["sensors"][0]["points"];
  EXPECT_LE(space.size(), 3 * kMostSpacePoints);
  EXPECT_EQ(space[2], 3.0);

  first->sent.clear();
  sut.onMessage(first, R"({"op":"inspect","sensor":null})", false);
  sut.show(snapshot);
  EXPECT_THAT(opsOf(*first), ElementsAre("state"));
}

TEST(PageFeed, aShiftedMapIsToldAndTakesGoalsInTheCoordinatesOfItsFile) {
  const auto map = test::makeRoom();
  map->setShift({450'000.0, 5'400'000.0});
  auto options = test::inRoom({2.0f, 3.0f, 0.0f});
  options.map = map;
  const auto robot = session::openSimulated(0, options);
  robot->subscribe("test", {"Sonar"});
  EXPECT_THAT(
      [&] {
        robot->setGoal({20.0f, 4.0f});
      },
      ThrowsMessage<session::UsageError>(HasSubstr(" 450020.00, 5400004.00 m")));
  robot->setGoal({4.0f, 4.5f});
  robot->run(robot->getSettlingTime());
  RequestQueue requests;
  PageFeed sut(*robot, requests);
  const auto page = std::make_shared<test::FakeClient>();
  sut.onOpen(page);
  EXPECT_EQ(page->takeTexts()[0]["map"]["origin"]["y"], 5'399'999.95);

  sut.onMessage(page, R"({"op":"goal","x":450004.125,"y":5400003.0625})", false);
  const auto goal = requests.takeUntil({}).at(0).command;
  EXPECT_EQ(std::get<session::GoalCommand>(goal).position, Math::Position2D(4.125f, 3.0625f));

  sut.onMessage(page, R"({"op":"inspect","sensor":"LeftSonar"})", false);
  sut.onMessage(page, R"({"op":"space","on":true})", false);
  session::Snapshot snapshot = robot->look();
  snapshot.sensors.at(0).marks.hits = {{1.0f, 2.0f, 0.5f}};
  snapshot.people = {{1.25f, 2.5f}};
  snapshot.touches = {{"Bumper", {2.125f, 3.0f}, 0.0}};
  sut.show(snapshot);
  const auto told = page->takeTexts();
  snapshot.map = nullptr;
  sut.show(snapshot);
  const auto inMap = page->takeTexts();
  const struct {
    std::size_t message;
    const char* x;
    const char* y;
  } places[] = {{0, "/pose/x", "/pose/y"},
                {0, "/goal/x", "/goal/y"},
                {0, "/route/0/0", "/route/0/1"},
                {0, "/people/0/0", "/people/0/1"},
                {0, "/touches/0/x", "/touches/0/y"},
                {0, "/sensors/0/fieldOfView/x", "/sensors/0/fieldOfView/y"},
                {0, "/sensors/0/points/0", "/sensors/0/points/1"},
                {1, "/records/0/sensorTransform/3", "/records/0/sensorTransform/7"},
                {2, "/sensors/0/points/0", "/sensors/0/points/1"}};
  for (const auto& [message, x, y] : places) {
    const auto shiftOf = [&, i = message](const char* number) {
      const nlohmann::json::json_pointer place(number);
      return told.at(i).at(place).get<double>() - inMap.at(i).at(place).get<double>();
    };
    EXPECT_NEAR(shiftOf(x), 450'000.0, 0.0006) << x;
    EXPECT_NEAR(shiftOf(y), 5'400'000.0, 0.0006) << y;
  }

  const test::LogCapture log;
  robot->run(boost::chrono::seconds(20));
  EXPECT_THAT(log.lines(), Contains(HasSubstr("arrived at 450004.00, 5400004.50 m")));
}

/** Wants a sensor, and counts what it is shown. */
struct Wisher : Outlet {
  session::Demand getDemand() const override { return {{"wisher", {"Laser"}}, {"page 1", {"A"}}}; }
  bool isWatched() const override { return watched; }
  void show(const session::Snapshot&) override { ++shown; }

  bool watched = true;
  int shown = 0;
};

TEST_F(PageFeedTest, aGroupOfOutletsShowsOnlyTheWatchedOnes) {
  const auto wisher = std::make_shared<Wisher>();
  OutletList list;
  list.add(std::make_shared<PageFeed>(*robot, requests));
  list.add(wisher);
  EXPECT_THAT(list.getDemand(),
              ElementsAre(Pair("page 1", ElementsAre("A")), Pair("wisher", ElementsAre("Laser"))));
  EXPECT_TRUE(list.isWatched());
  list.show({});
  wisher->watched = false;
  list.show({});
  EXPECT_EQ(wisher->shown, 1);
  EXPECT_FALSE(list.isWatched());
}

}  // namespace
}  // namespace QV::outlets
