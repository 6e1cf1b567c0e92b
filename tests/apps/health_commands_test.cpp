#include <iterator>
#include <sstream>
#include <string>
#include <vector>

#include "tests/apps/run_program.h"
#include "tests/support/vocabulary.h"

namespace QV::app {
namespace {

using testing::ContainsRegex;

/**
 * The words of a command about a sensor that fails, and with a limit, about one that only seemed
 * to.
 */
struct HealthCase {
  std::string command;
  std::string fault;
  int status;
  std::string expected;
  std::string limit;
  std::string expectedWithIt;
  int statusWithIt = 0;
};

std::vector<std::string> wordsIn(const std::string& text) {
  std::istringstream stream(text);
  return {std::istream_iterator<std::string>(stream), {}};
}

const std::vector<HealthCase> kHealthCases{
    {"list --health", "FrontLaser:delayed", 0,
     "\nFrontLaser +late +its record is 0\\.[0-9]+ s old, limit 0\\.40 s \\(for 2\\.[0-9] s\\) "
     "+ends when good "
     "records come; check the driver\n",
     "FrontLaser:age=off", "\nFrontLaser +sound +its records are fresh"},
    {"watch --once", "BackSonar:off", 1, "\nBackSonar .* 0 +- +- +starting\n", "Sonar:start=0.1",
     "\nBackSonar .* 0 +- +- +silent +no fresh record since it started 0\\.[0-9]+ s ago, limit "
     "0\\.10 s",
     1},
    {"check --subscribe FrontLaser", "FrontLaser:delayed", 1,
     "\nFrontLaser +Laser +late +late +[0-9]+ +[0-9]+ +its record is 0\\.[0-9]+ s old, limit "
     "0\\.40 s +"
     "ends when good records come",
     "age=off", "\nFrontLaser +Laser +late +sound +[0-9]+ +[0-9]+ +0\\.[0-9]+ s old\n", 1},
    {"check --subscribe BlindZone", "BlindZone:garbage", 1,
     "\nBlindZone +BlindZone +noisy +noisy +[0-9]+ +[0-9]+ +its answer changed [0-9]+ times in "
     "its last 20 readings, limit 5",
     "garbage=off", "\nBlindZone +BlindZone +works +sound "}};

TEST(HealthCommands, reportBadHealthWithFiguresAndUseTheGivenLimits) {
  for (const HealthCase& tested : kHealthCases) {
    SCOPED_TRACE(tested.command);
    auto arguments = wordsIn(tested.command + " --robot porter --fault " + tested.fault);
    const Result result = run(arguments);
    EXPECT_EQ(result.status, tested.status);
    EXPECT_THAT(result.out, ContainsRegex(tested.expected));
    arguments.insert(arguments.end(), {"--limit", tested.limit});
    const Result limited = run(arguments);
    EXPECT_EQ(limited.status, tested.statusWithIt);
    EXPECT_THAT(limited.out, ContainsRegex(tested.expectedWithIt));
  }
}

TEST(HealthCommands, writeJson) {
  const Result result =
      run(wordsIn("list --health --robot porter --fault FrontLaser:delayed "
                  "--format jsonl"));
  EXPECT_THAT(result.error, StartsWith("qvsensors: the robot starts at "));
  int faults = 0;
  for (const auto& line : recordsIn(result.out)) {
    const auto& health = line["health"];
    if (line["sensorName"] != "FrontLaser") {
      EXPECT_EQ(health["state"], "sound") << line;
      EXPECT_EQ(health["remedy"], "") << line;
      continue;
    }
    ++faults;
    EXPECT_EQ(health["state"], "late");
    EXPECT_THAT(health["reason"].get<std::string>(), HasSubstr(" s old, limit 0.40 s"));
    EXPECT_EQ(health["remedy"], "ends when good records come; check the driver");
    EXPECT_EQ(health["times"], 1);
    EXPECT_GT(health["since"].get<double>(), 0.0);
    EXPECT_LT(health["since"].get<double>(), 3.0);
  }
  EXPECT_EQ(faults, 1);
}

TEST(HealthCommands, refuseInvalidLimits) {
  for (const BadInput& input : std::vector<BadInput>{
           {wordsIn("check --robot porter --limit agee=1"),
            "--limit: limit \"agee=1\": one of start, silence, age, "},
           {wordsIn("watch --once --robot porter --limit Sonar:age=1s"),
            "--limit: limit \"Sonar:age=1s\": a number above 0, or off, expected"},
           {wordsIn("list --health --robot porter --limit Nobody:age=1"), "--limit: "},
           {wordsIn("list --robot porter --limit age=1"), "--health"}}) {
    expectRefused(input);
  }
}

}  // namespace
}  // namespace QV::app
