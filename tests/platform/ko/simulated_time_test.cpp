#include "platform/ko/simulated_time.h"

#include <gmock/gmock.h>

#include "platform/ko/event_loop.h"
#include "platform/ko/os.h"
#include "platform/ko/periodic_task.h"

namespace ko {
namespace {

using boost::chrono::milliseconds;
using testing::ElementsAre;

TEST(SimulatedTime, runsWhatFallsDueInOrderOfTimeThenOfStart) {
  SimulatedTime time;
  std::vector<std::string> trace;
  PeriodicTask task;
  task.setCallback([&] {
    trace.push_back("task " + std::to_string(Clock::now().time_since_epoch().count() / 1000000));
  });
  task.setUsPeriod(10'000);
  task.start(true);
  getEventLoop().asyncDelay([&] { trace.push_back("delay"); }, milliseconds(10));
  getEventLoop().post([&] {
    trace.push_back("post");
    os::msleep(5);
  });
  time.advance(milliseconds(20));
  EXPECT_THAT(trace, ElementsAre("task 0", "post", "task 10", "delay", "task 20"));
}

}  // namespace
}  // namespace ko
