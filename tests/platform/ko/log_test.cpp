#include "platform/ko/log.h"

#include <chrono>
#include <ctime>
#include <thread>

#include <gmock/gmock.h>

#include "tests/support/log_capture.h"

namespace ko::log {
namespace {

using testing::ElementsAre;

/** Counts how often it is formatted. */
struct Formatted {
  int* count;
};

std::ostream& operator<<(std::ostream& stream, const Formatted& value) {
  ++*value.count;
  return stream << "formatted";
}

struct LogTest : testing::Test {
  ~LogTest() override { resetLevel("Test"); }
  QV::test::LogCapture capture;
};

TEST(Log, withoutASinkALevelIsEnabledUpToTheConsoles) {
  setLevel(Level::warning);
  EXPECT_TRUE(isEnabled(Level::error, "Test") && isEnabled(Level::warning, "Test"));
  EXPECT_FALSE(isEnabled(Level::info, "Test") || isEnabled(Level::silent, "Test"));
}

TEST_F(LogTest, linesBelowTheCategorysLevelAreNotFormatted) {
  int count = 0;
  setLevel("Test", Level::error);
  warning("Test", "run") << Formatted{&count};
  setLevel("Test", Level::silent);
  fatal("Test", "run") << Formatted{&count};
  EXPECT_EQ(count, 0);
  warning("Other", "run") << Formatted{&count};
  EXPECT_EQ(count, 1);
  resetLevel("Test");
  warning("Test", "run") << Formatted{&count};
  EXPECT_EQ(count, 2);
  EXPECT_THAT(capture.lines(),
              ElementsAre("warning Other.run: formatted", "warning Test.run: formatted"));
}

TEST_F(LogTest, aSinkMayLogAndMayThrowWithoutHarm) {
  ScopedSink sink(Level::error, [](const Record&) {
    error("Nested", "sink") << "again";
    throw std::runtime_error("sink broke");
  });
  error("Test", "run") << "first";
  EXPECT_THAT(capture.lines(), ElementsAre("error Test.run: first"));
}

TEST_F(LogTest, standardErrorHasOneLinePerLogRecord) {
  setLevel(Level::warning);
  testing::internal::CaptureStderr();
  warning("Test", "run") << "two\nlines {} %s \x1b[31mcaf\xc3\xa9\x7f";
  info("Test", "run") << "too low";
  EXPECT_THAT(testing::internal::GetCapturedStderr(),
              testing::MatchesRegex("\\[.*\\] \\[warning\\] Test.run: two\\\\nlines \\{\\} %s "
                                    "\\\\x1b\\[31mcaf\xc3\xa9\\\\x7f\n"));
}

std::string timeOfDay() {
  using WallClock = std::chrono::system_clock;
  const std::time_t now = WallClock::to_time_t(WallClock::now());
  std::tm day{};
  localtime_r(&now, &day);
  char text[16];
  std::strftime(text, sizeof text, "[%H:%M:%S", &day);
  return text;
}

TEST_F(LogTest, inRealTimeALineHasTheTimeOfDay) {
  setLevel(Level::warning);
  testing::internal::CaptureStderr();
  const std::string before = timeOfDay();
  warning("Test", "run") << "now";
  const std::string after = timeOfDay();
  EXPECT_THAT(testing::internal::GetCapturedStderr(),
              testing::AnyOf(testing::StartsWith(before), testing::StartsWith(after)));
}

TEST_F(LogTest, aSinkGoesAwayWhileOthersLog) {
  std::thread writer([] {
    for (int i = 0; i < 500; ++i) error("Test", "run") << i;
  });
  for (int i = 0; i < 500; ++i) {
    int delivered = 0;
    ScopedSink sink(Level::error, [&delivered](const Record&) { ++delivered; });
  }
  writer.join();
  EXPECT_EQ(capture.records().size(), 500u);
}

}  // namespace
}  // namespace ko::log
