#include "platform/ko/internal/line_folder.h"

#include <gmock/gmock.h>

namespace ko::log::detail {
namespace {

struct Given {
  double seconds;
  Level level;
  std::string line;
  /** What is printed then. */
  std::vector<std::string> expected;
};

TEST(LineFolder, tellsTheFirstAtOnceAndTheOthersByTheirNumber) {
  const auto error = Level::error;
  const Given rows[] = {
      {0.0, error, "Laser1: 0.1 s late", {"Laser1: 0.1 s late"}},
      {0.1, error, "Laser1: 0.25 s late", {}},
      {0.2, error, "Laser2: 0.1 s late", {"Laser1: 0.25 s late", "Laser2: 0.1 s late"}},
      {0.3, error, "Laser1: 7 s late", {}},
      {0.4, error, "Laser2: 7 s late", {}},
      {0.5, error, "Laser1: 8 s late", {}},
      {0.6,
       Level::warning,
       "Laser1: 8 s late",
       {"Laser1: 8 s late (again, 2 times)", "Laser2: 7 s late", "Laser1: 8 s late"}},
      {0.7, Level::info, "driven", {"driven"}},
      {0.8, Level::info, "driven", {"driven"}},
      {0.9, error, "Laser2: 1 s late", {}},
      {10.7, error, "Laser2: 2 s late", {"Laser2: 2 s late (again, 2 times)"}},
      {10.8, error, "Laser2: 3 s late", {}},
      {0.1, error, "Laser2: 4 s late", {"Laser2: 4 s late (again, 2 times)"}},
      {0.2, error, "Laser2: 5 s late", {}},
  };
  LineFolder sut;
  const auto textsOf = [](const std::vector<FoldedLine>& lines) {
    std::vector<std::string> texts;
    for (const FoldedLine& line : lines) texts.push_back(line.text);
    return texts;
  };
  for (const auto& [seconds, level, line, expected] : rows) {
    const Clock::time_point now(Duration(static_cast<std::int64_t>(1e9 * seconds)));
    EXPECT_EQ(textsOf(sut.fold(level, line, now)), expected) << seconds << ": " << line;
  }
  EXPECT_THAT(textsOf(sut.flush({})), testing::ElementsAre("Laser2: 5 s late"));
}

}  // namespace
}  // namespace ko::log::detail
