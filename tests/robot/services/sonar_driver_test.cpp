#include "robot/services/sonar_driver.h"

#include <gmock/gmock.h>

#include "platform/ko/simulated_time.h"
#include "platform/middleware/qv_error.h"
#include "platform/middleware/qv_memory_proxy.h"
#include "platform/middleware/qv_proxy.h"
#include "platform/model/model_utils.h"
#include "tests/support/broker_with_memory.h"
#include "tests/support/log_capture.h"
#include "tests/support/throws.h"

namespace QV::robot {
namespace {

using boost::chrono::milliseconds;
using test::errorOf;
using testing::ElementsAre;

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

class SonarDriverTest : public testing::Test {
 protected:
  boost::shared_ptr<SonarDriver> makeDriver(int kind, ko::Duration period = SonarDriver::kPeriod) {
    auto driver = boost::make_shared<SonarDriver>(broker, robotOfKind(kind), period);
    broker->registerModule(driver);
    driver->setSource([this](const std::string& sonar) {
      asked.push_back(sonar);
      return range;
    });
    return driver;
  }

  /** The key's value, or 0 when there is none. */
  float valueOf(const std::string& key) const {
    try {
      return memory.getData(key).toFloat();
    } catch (const QVError&) {
      return 0.0f;
    }
  }

  void call(const std::string& method, const std::string& name) {
    QVProxy(broker, "QVSonar").callVoid(method, name);
  }

  ko::SimulatedTime time;
  boost::shared_ptr<QVBroker> broker = test::brokerWithMemory();
  QVMemoryProxy memory{broker};
  std::optional<float> range = 1.5f;
  std::vector<std::string> asked;
};

TEST_F(SonarDriverTest, onARobotOfKind0KeysAreWrittenWhileSomebodyIsSubscribed) {
  const auto sut = makeDriver(0);
  time.advance(milliseconds(500));
  EXPECT_EQ(valueOf("left"), 0.0f);
  call("subscribe", "A");
  time.runDue();
  EXPECT_EQ(valueOf("left"), 1.5f);
  EXPECT_EQ(valueOf("right"), 1.5f);
  range = 2.0f;
  time.advance(milliseconds(99));
  EXPECT_EQ(valueOf("left"), 1.5f);
  time.advance(milliseconds(1));
  EXPECT_EQ(valueOf("left"), 2.0f);
  call("unsubscribe", "A");
  range = 0.5f;
  time.advance(milliseconds(500));
  EXPECT_EQ(valueOf("left"), 2.0f);
  call("subscribe", "A");
  time.runDue();
  EXPECT_EQ(valueOf("left"), 0.5f);
}

TEST_F(SonarDriverTest, onAnyOtherKindKeysAreAlwaysWritten) {
  for (const int kind : {1, -1}) {
    const auto sut = makeDriver(kind, milliseconds(20));
    asked.clear();
    time.advance(milliseconds(50));
    EXPECT_THAT(asked, ElementsAre("Left", "Right", "Left", "Right", "Left", "Right"));
    call("subscribe", "A");
    call("unsubscribe", "A");
    time.advance(milliseconds(20));
    EXPECT_EQ(asked.size(), 8u);
    broker->unregisterModule("QVSonar");
  }
}

TEST_F(SonarDriverTest, subscriptionsAreCountedByName) {
  const auto sut = makeDriver(0);
  for (const char* name : {"A", "B", "A"}) call("subscribe", name);
  const auto isMeasuring = [this] {
    asked.clear();
    time.advance(SonarDriver::kPeriod);
    return !asked.empty();
  };
  for (const char* name : {"A", "B"}) {
    call("unsubscribe", name);
    EXPECT_TRUE(isMeasuring());
  }
  EXPECT_EQ(errorOf([&] { call("unsubscribe", "B"); }),
            "QVSonar::unsubscribe: \"B\" is not subscribed");
  EXPECT_TRUE(isMeasuring());
  call("unsubscribe", "A");
  EXPECT_FALSE(isMeasuring());
  EXPECT_EQ(errorOf([&] { call("unsubscribe", "A"); }),
            "QVSonar::unsubscribe: \"A\" is not subscribed");
}

TEST_F(SonarDriverTest, noEchoIsWrittenAsAMetreBeyondTheRange) {
  const auto sut = makeDriver(1);
  range = std::nullopt;
  time.runDue();
  EXPECT_EQ(memory.getData("left"), QVValue(3.5f));
  EXPECT_EQ(memory.getData("right"), QVValue(1.0f));
}

TEST_F(SonarDriverTest, aSonarThatFailsKeepsItsKeyAndHurtsNoOther) {
  test::LogCapture log;
  const auto sut = makeDriver(1);
  const auto measure = [&](float value, const std::string& failure) {
    sut->setSource([=](const std::string& sonar) -> std::optional<float> {
      if (sonar == "Left" && !failure.empty()) throw std::runtime_error(failure);
      return value;
    });
    time.advance(SonarDriver::kPeriod);
    return std::pair(valueOf("left"), valueOf("right"));
  };
  EXPECT_EQ(measure(1.0f, ""), std::pair(1.0f, 1.0f));
  EXPECT_EQ(measure(2.0f, "dusty"), std::pair(1.0f, 2.0f));
  EXPECT_EQ(measure(3.0f, "dusty"), std::pair(1.0f, 3.0f));
  EXPECT_EQ(measure(4.0f, "gone"), std::pair(1.0f, 4.0f));
  EXPECT_EQ(measure(5.0f, ""), std::pair(5.0f, 5.0f));
  EXPECT_EQ(measure(6.0f, "gone"), std::pair(5.0f, 6.0f));
  const std::string start = "error QVSonar.measure: Left: ";
  EXPECT_THAT(log.lines(), ElementsAre(start + "dusty", start + "gone", start + "gone"));
}

TEST_F(SonarDriverTest, withoutASourceNothingIsWritten) {
  test::LogCapture log;
  const auto sut = makeDriver(1);
  time.runDue();
  sut->setSource({});
  range = 2.0f;
  time.advance(SonarDriver::kPeriod);
  EXPECT_EQ(valueOf("left"), 1.5f);
  EXPECT_THAT(log.lines(), testing::IsEmpty());
}

TEST_F(SonarDriverTest, itsEndEndsTheWriting) {
  auto sut = makeDriver(1);
  time.runDue();
  broker->unregisterModule("QVSonar");
  sut.reset();
  range = 2.0f;
  time.advance(milliseconds(500));
  EXPECT_EQ(valueOf("left"), 1.5f);
}

}  // namespace
}  // namespace QV::robot
