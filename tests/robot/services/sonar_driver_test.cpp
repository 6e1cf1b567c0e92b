#include "robot/services/internal/sonar_driver.h"

#include <atomic>
#include <latch>
#include <mutex>
#include <thread>

#include "platform/model/model_utils.h"
#include "tests/support/fake_robot.h"

namespace QV::robot {
namespace {

Model::Robot robotOfKind(int kind) {
  return Model::ModelUtils::robotFromXml(
      "<robot name='r'><kind code='" + std::to_string(kind) +
      "'/><link name='body'/>"
      "<sensor name='Left' type='9'><property key='maximumDetectionDistance' value='2.5'/>"
      "<memory_key>left</memory_key></sensor>"
      "<sensor name='Right' type='9'><memory_key>right</memory_key></sensor>"
      "<sensor name='Keyless' type='9'/>"
      "<sensor name='Two' type='9'><memory_key>a</memory_key><memory_key>b</memory_key></sensor>"
      "<sensor name='Laser' type='8'><memory_key>laser</memory_key></sensor></robot>");
}

struct SonarDriverTest : test::FakeRobotTest {
  SonarDriverTest() {
    memory.insertData("left", 0.0f);
    memory.insertData("right", 0.0f);
  }

  void makeDriver(int kind, ko::Duration period = SonarDriver::kPeriod) {
    sut = boost::make_shared<SonarDriver>(broker, robotOfKind(kind), period);
    broker->registerModule(sut);
    sut->setSource([this](const std::string& sonar) {
      asked.push_back(sonar);
      return range;
    });
  }

  void call(const std::string& method, const std::string& name) const {
    QVProxy(broker, "QVSonar").callVoid(method, name);
  }

  /** The two keys after some milliseconds in which each sonar measures `value`. */
  std::pair<float, float> keysIn(int ms, std::optional<float> value) {
    range = value;
    time.advance(milliseconds(ms));
    return {memory.getData("left").toFloat(), memory.getData("right").toFloat()};
  }

  boost::shared_ptr<SonarDriver> sut;
  std::optional<float> range;
  std::vector<std::string> asked;
};

TEST_F(SonarDriverTest, onARobotOfKind0KeysAreWrittenWhileSomebodyIsSubscribed) {
  makeDriver(0);
  EXPECT_EQ(keysIn(500, 1.0f), std::pair(0.0f, 0.0f));
  for (int i = 0; i < 2; ++i) {
    call("subscribe", "A");
    EXPECT_EQ(keysIn(0, 1.5f), std::pair(1.5f, 1.5f));
    EXPECT_EQ(keysIn(99, 2.0f), std::pair(1.5f, 1.5f));
    EXPECT_EQ(keysIn(1, 2.0f), std::pair(2.0f, 2.0f));
    call("unsubscribe", "A");
    EXPECT_EQ(keysIn(500, 3.0f), std::pair(2.0f, 2.0f));
  }
}

TEST_F(SonarDriverTest, onAnyOtherKindKeysAreWrittenAsLongAsItLives) {
  makeDriver(-1, milliseconds(20));
  EXPECT_EQ(keysIn(50, std::nullopt), std::pair(3.5f, 1.0f));
  EXPECT_THAT(asked, ElementsAre("Left", "Right", "Left", "Right", "Left", "Right"));
  call("subscribe", "A");
  call("unsubscribe", "A");
  EXPECT_EQ(keysIn(10, 0.5f), std::pair(0.5f, 0.5f));
  EXPECT_EQ(asked.size(), 8u);
  broker->unregisterModule("QVSonar");
  sut.reset();
  EXPECT_EQ(keysIn(500, 2.0f), std::pair(0.5f, 0.5f));
}

TEST_F(SonarDriverTest, subscriptionsAreCountedByName) {
  makeDriver(0);
  for (const char* name : {"A", "B", "A"}) call("subscribe", name);
  call("unsubscribe", "A");
  call("unsubscribe", "B");
  EXPECT_EQ(errorOf([&] { call("unsubscribe", "B"); }),
            "QVSonar::unsubscribe: \"B\" is not subscribed");
  EXPECT_EQ(keysIn(100, 1.0f), std::pair(1.0f, 1.0f));
  call("unsubscribe", "A");
  EXPECT_EQ(keysIn(100, 2.0f), std::pair(1.0f, 1.0f));
}

TEST_F(SonarDriverTest, aFailingSonarKeepsItsLastValueAndIsLoggedWhenItsErrorChanges) {
  makeDriver(1);
  std::string failure;
  sut->setSource([&](const std::string& sonar) {
    if (sonar == "Left" && !failure.empty()) throw std::runtime_error(failure);
    return range;
  });
  EXPECT_EQ(keysIn(0, 1.0f), std::pair(1.0f, 1.0f));
  for (const char* text : {"dusty", "dusty", "gone"}) {
    failure = text;
    EXPECT_EQ(keysIn(100, 2.0f), std::pair(1.0f, 2.0f));
  }
  failure.clear();
  EXPECT_EQ(keysIn(100, 3.0f), std::pair(3.0f, 3.0f));
  failure = "gone";
  time.advance(milliseconds(100));
  sut->setSource({});
  EXPECT_EQ(keysIn(100, 4.0f), std::pair(3.0f, 3.0f));
  const std::string start = "error QVSonar.measure: Left: ";
  EXPECT_THAT(log.lines(), ElementsAre(start + "dusty", start + "gone", start + "gone"));
}

TEST(SonarDriver, subscribersMayComeAndGoOnAllThreadsWhileItMeasures) {
  const auto broker = test::brokerWithMemory();
  std::atomic<int> atOnce{0};
  std::once_flag once;
  std::latch measured(1);
  SonarDriver sut(broker, robotOfKind(0), boost::chrono::microseconds(1));
  sut.setSource([&](const std::string&) {
    if (atOnce.fetch_add(1) != 0) ADD_FAILURE() << "two measurements at once";
    --atOnce;
    return 1.0f;
  });
  std::vector<std::thread> subscribers;
  for (const std::string name : {"A", "B", "A"}) {
    subscribers.emplace_back([&sut, name] {
      const QVValue argument[] = {name};
      for (int i = 0; i < 300; ++i) {
        for (const char* method : {"subscribe", "unsubscribe"}) sut.call(method, argument);
      }
    });
  }
  for (std::thread& subscriber : subscribers) subscriber.join();
  sut.setSource([&](const std::string&) {
    std::call_once(once, [&] { measured.count_down(); });
    return 1.0f;
  });
  sut.call("subscribe", std::vector<QVValue>{"A"});
  measured.wait();
}

}  // namespace
}  // namespace QV::robot
