#include "platform/ko/clock.h"

#include <gtest/gtest.h>

namespace ko {
namespace {

using boost::chrono::hours;
using boost::chrono::milliseconds;

constexpr std::int64_t kWrapMs = std::int64_t{1} << 32;

Clock::time_point atMs(std::int64_t ms) {
  return Clock::time_point(milliseconds(ms));
}

TEST(Clock, startsNearZeroAndNeverGoesBack) {
  const auto first = Clock::now();
  const auto second = Clock::now();
  EXPECT_GE(first, Clock::time_point());
  EXPECT_LT(first, Clock::time_point(hours(24)));
  EXPECT_GE(second, first);
}

TEST(Clock, aMillisecondCountIsReadAsTheTimeNearestToTheReference) {
  struct Case {
    const char* what;
    std::int64_t count;
    std::int64_t referenceMs;
    std::int64_t expectedMs;
  };
  const Case cases[] = {
      {"the reference itself", 5000, 5000, 5000},
      {"a little before", 4990, 5000, 4990},
      {"a little after", 5010, 5000, 5010},
      {"a count that has just become negative", -kWrapMs / 2, kWrapMs / 2 + 3, kWrapMs / 2},
      {"a count from before the wrap", -10, kWrapMs + 20, kWrapMs - 10},
      {"a count from after the wrap", 7, kWrapMs - 5, kWrapMs + 7},
      {"the third turn", 100, 3 * kWrapMs + 50, 3 * kWrapMs + 100},
      {"before the start of the process", -500, 100, -500},
  };
  for (const Case& c : cases) {
    const auto count = static_cast<std::int32_t>(c.count);
    EXPECT_EQ(Clock::fromInt32ms(count, atMs(c.referenceMs), 0), atMs(c.expectedMs)) << c.what;
    EXPECT_EQ(Clock::fromInt32ms(count + 30, atMs(c.referenceMs), 30), atMs(c.expectedMs))
        << c.what;
    EXPECT_EQ(Clock::toInt32ms(atMs(c.expectedMs)), count) << c.what;
  }
}

TEST(Clock, negativeTimesAreRoundedDown) {
  EXPECT_EQ(Clock::toInt32ms(Clock::time_point(Duration(-1))), -1);
  EXPECT_EQ(Clock::toInt32ms(Clock::time_point(Duration(999'999))), 0);
}

}  // namespace
}  // namespace ko
