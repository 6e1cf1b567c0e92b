#include <string>
#include <vector>

#include "tests/apps/run_program.h"
#include "tests/support/temporary_folder.h"
#include "tests/support/vocabulary.h"

namespace QV::app {
namespace {

// Three beams; the laser sits 0.1 m ahead.
const std::string kScans =
    "# a log\n"
    "ODOM 0 0 0 0 0 0 1.0 host 1.0\n"
    "FLASER 3 1.0 2.0 81.0 0.1 0 0 0 0 0 1.0 host 1.0\n"
    "FLASER 3 1.5 2.5 3.5 1.1 2 0 1 2 0 1.2 host 1.2\n";
const std::string kRanges =
    "100 1000 1000 1000 1000 1000 1000 1000 5110\n350 900 900 900 900 900 900 900 900\n";
const std::string kPoses = "100 0 0 0\n350 500 0 900\n";

struct ReplayTest : testing::Test {
  const test::TemporaryFolder folder;
};

TEST_F(ReplayTest, recognisesLogsByTheirContent) {
  const auto lidar = recordsIn(run({"replay", folder.write("a", kScans), "--format", "jsonl"}).out);
  ASSERT_EQ(lidar.size(), 2u);
  EXPECT_EQ(lidar[0]["points"].size(), 2u);
  EXPECT_EQ(lidar[1]["points"][1], (nlohmann::json{{"x", 2.5}, {"y", 0.0}, {"z", 0.0}}));
  EXPECT_EQ(lidar[0]["timestamp"], 0);
  EXPECT_EQ(lidar[1]["timestamp"], 200'000'000);
  EXPECT_EQ(lidar[1]["frame"], "robot");
  folder.write("poses.txt", kPoses);
  const Result sonars = run({"replay", folder.write("b", kRanges)});
  EXPECT_EQ(sonars.status, 0) << sonars.error;
  EXPECT_THAT(sonars.out, testing::ContainsRegex("Sonar0 +Sonar +15 +1.000 .* 0.000\n"));
  EXPECT_THAT(sonars.out, testing::ContainsRegex("Sonar7 +Sonar +15 +- .* 0.000\n"));
  EXPECT_THAT(sonars.out, testing::ContainsRegex("Sonar7 +Sonar +15 +0.900 .* 0.250\n"));
}

TEST_F(ReplayTest, writesRecordsWithThePoseOfTheRobot) {
  const auto output = folder / "records.jsonl";
  const Result result = run({"replay", folder.write("a", kScans), "-o", output});
  EXPECT_THAT(result.out, testing::ContainsRegex("Laser +Laser +2 +5 +1.000\nWrote "));
  const auto records = recordsIn(test::readBytes(output));
  ASSERT_EQ(records.size(), 2u);
  EXPECT_EQ(records[1]["robotPose"], (nlohmann::json{{"x", 1.0}, {"y", 2.0}, {"theta", 0.0}}));
}

TEST_F(ReplayTest, aBadLogIsRefusedWithOneLineThatNamesIt) {
  const auto alone = folder.write("alone", kRanges);
  const BadInput cases[] = {
      {{"replay", folder / "none"}, "none: a readable file expected"},
      {{"replay", folder.write("empty", "\n")}, "empty: no FLASER line found"},
      {{"replay", folder.write("odd", "\n\x7f\x45LF")}, "odd: line 2: FLASER or ODOM expected"},
      {{"replay", alone}, "alone: a sonar log needs a file of poses; give it with --poses"},
      {{"replay", alone, "--poses", folder.write("late", "100 0 0 0\n351 0 0 0\n")},
       "late: line 2: the time"},
      {{"replay", folder.write("swapped", kPoses), "--poses", alone},
       "swapped: line 1: 9 words expected"},
      {{"replay", alone, "--poses", folder.write("good", kPoses), "-o", folder / "no/r.jsonl"},
       "r.jsonl: can't be written"},
      {{"replay"}, "RUN is required"},
  };
  for (const BadInput& c : cases) expectRefused(c);
}

}  // namespace
}  // namespace QV::app
