#include "sensor/core/scoped_subscription.h"

#include <stdexcept>
#include <utility>

#include "tests/support/fake_sensor.h"
#include "tests/support/log_capture.h"
#include "tests/support/vocabulary.h"

namespace QV::sensor {
namespace {

struct ScopedSubscriptionTest : testing::Test {
  ScopedSubscriptionTest() {
    for (const char* name : {"A", "B", "C"}) sensors.push_back(manager.add(name, "Sonar"));
  }
  int running() const {
    int count = 0;
    for (const auto& sensor : sensors) count += sensor->isStarted() ? 1 : 0;
    return count;
  }

  test::LogCapture log;
  test::FakeManager manager;
  std::vector<boost::shared_ptr<test::FakeSensor>> sensors;
};

TEST_F(ScopedSubscriptionTest, lastsAsLongAsItsScopeEvenIfMoved) {
  {
    ScopedSubscription first(manager, "me", {"A"});
    EXPECT_EQ(running(), 1);
    ScopedSubscription second(std::move(first));
    ScopedSubscription all(manager, "you");
    EXPECT_EQ(running(), 3);
    all = std::move(second);
    EXPECT_EQ(running(), 1);
    EXPECT_THAT(manager.getSubscribers(), testing::ElementsAre("me"));
  }
  EXPECT_THAT(manager.getSubscribers(), IsEmpty());
}

TEST_F(ScopedSubscriptionTest, leavesNothingRunningWhenStartingThrows) {
  sensors[1]->onStart = [] { throw std::runtime_error("no power"); };
  EXPECT_THROW(ScopedSubscription(manager, "me"), std::runtime_error);
  EXPECT_EQ(running(), 0);
  EXPECT_THAT(manager.getSubscribers(), IsEmpty());
}

TEST_F(ScopedSubscriptionTest, stopsEverySensorEvenIfStoppingOneThrows) {
  {
    ScopedSubscription subscription(manager, "me");
    sensors[0]->onStop = [] { throw std::runtime_error("stuck"); };
    sensors[1]->onStop = [] { throw 7; };
  }
  EXPECT_EQ(running(), 0);
  EXPECT_THAT(manager.getSubscribers(), IsEmpty());
  const std::string failure =
      "error Navigation.ScopedSubscription.unsubscribeGuarded: Unable to unsubscribe \"me\"";
  EXPECT_THAT(log.lines(), ElementsAre(failure + ": stuck", failure));
}

}  // namespace
}  // namespace QV::sensor
