#include <map>
#include <string>
#include <vector>

#include "session/shared_files.h"
#include "tests/apps/run_program.h"
#include "tests/support/temporary_folder.h"
#include "tests/support/vocabulary.h"

namespace QV::app {
namespace {

/** A finding of a check about a sensor that fails. */
struct Finding {
  std::string result;
  std::string why;
};

using Findings = std::map<std::string, Finding>;

void expectFindings(std::vector<std::string> arguments, const Findings& expected) {
  arguments.insert(arguments.begin(), {"check", "--format", "jsonl"});
  const Result result = run(arguments);
  EXPECT_THAT(result.error, testing::MatchesRegex("qvsensors: the robot starts at [^\n]+\n"));
  EXPECT_EQ(result.status, expected.empty() ? 0 : 1);
  std::size_t failed = 0;
  for (const auto& sensor : recordsIn(result.out)) {
    SCOPED_TRACE(sensor.dump());
    const auto found = expected.find(sensor["sensorName"]);
    // Entries that are no sensors have a "description" and no "works".
    if (!sensor.contains("works") && sensor.contains("description")) continue;
    EXPECT_EQ(sensor["works"], found == expected.end());
    if (found == expected.end()) continue;
    ++failed;
    EXPECT_EQ(sensor["result"], found->second.result);
    EXPECT_THAT(sensor["why"].get<std::string>(), HasSubstr(found->second.why));
  }
  EXPECT_EQ(failed, expected.size());
}

const std::string kNoMode = "Timeout while setting operation Mode for FrontLaser";
const std::string kSame = "its points stay the same when the robot turns";
const std::string kNoImage = "Error while getting new 3D image";
const Findings kOldScans{{"DepthCamera", {"late", " s old"}},
                         {"FrontLaser", {"late", " s old"}},
                         {"HoleLaser", {"late", " s old"}},
                         {"PeoplePerception", {"late", " s old"}}};

struct Case {
  std::string fault;
  Findings expected;
};

class CheckFaults : public testing::TestWithParam<Case> {};

TEST_P(CheckFaults, checkFindsEachFaultAndNothingElse) {
  std::vector<std::string> arguments{"--robot",
                                     session::findSharedFile("descriptions/porter.urdf")};
  for (const char* sensor :
       {"BackSonar", "BlindZone", "DepthCamera", "FrontLaser", "HoleLaser", "PeoplePerception"}) {
    arguments.push_back("--fault");
    arguments.push_back(sensor + (":" + GetParam().fault));
  }
  expectFindings(arguments, GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(
    Kinds, CheckFaults,
    testing::Values(Case{"off@9000-9001", {}},
                    Case{"off",
                         {{"BackSonar", {"no record", "memory key Device/Sonar/Back/Value: "}},
                          {"BlindZone", {"no record", "memory key Device/BlindZone/Value: "}},
                          {"DepthCamera", {"no record", kNoImage}},
                          {"FrontLaser", {"failed to start", kNoMode}},
                          {"HoleLaser", {"failed to start", "Timeout"}}}},
                    Case{"stuck",
                         {{"BackSonar", {"frozen", kSame}},
                          {"DepthCamera", {"frozen", kSame}},
                          {"FrontLaser", {"frozen", kSame}},
                          {"PeoplePerception", {"frozen", kSame}}}},
                    Case{"garbage",
                         {{"BackSonar", {"bad data", "a point at "}},
                          {"BlindZone", {"noisy", "its answer changed "}},
                          {"DepthCamera", {"no record", "65535"}},
                          {"FrontLaser", {"bad data", "a point outside of its field of view"}},
                          {"HoleLaser", {"bad data", "its hole status is never valid"}},
                          {"PeoplePerception", {"bad data", "Wrong peopleEvent "}}}},
                    Case{"wrong", {}}, Case{"slow", kOldScans}, Case{"delayed", kOldScans},
                    Case{"intermittent",
                         {{"BackSonar", {"no record", "for 0.50 s"}},
                          {"BlindZone", {"no record", "for 0.50 s"}},
                          {"DepthCamera", {"late", kNoImage}},
                          {"FrontLaser", {"late", " s old"}},
                          {"HoleLaser", {"late", " s old"}},
                          {"PeoplePerception", {"late", " s old"}}}}),
    [](const auto& tested) {
      return tested.param.fault.substr(0, tested.param.fault.find('@')) +
             std::to_string(tested.index);
    });

TEST(Check, simulatedSensorsWork) {
  for (const char* kind : {"-1", "0", "1"}) expectFindings({"--kind", kind}, {});
}

TEST(Check, reportsSensorsThatCouldNotBeBuilt) {
  const test::TemporaryFolder folder;
  const auto path = folder.write("robot.urdf", R"(<robot name="tiny"><kind code="1"/>
    <link name="base"/>
    <sensor name="Laser" type="8"/>
    <sensor name="Mute" type="9"/>
    <sensor name="Twice" type="9"><memory_key>A</memory_key><memory_key>B</memory_key></sensor>
    <sensor name="Other" type="7"/></robot>)");
  expectFindings({"--robot", path},
                 {{"Laser", {"could not be built", "its model is incomplete"}},
                  {"Mute", {"could not be built", "its description is incomplete"}},
                  {"Twice", {"could not be built", "Wrong memory keys size"}}});
  EXPECT_THAT(run({"check", "--robot", path}).out, HasSubstr("Other: type is 7"));
  EXPECT_THAT(run({"check", "--robot", path, "--format", "jsonl"}).out,
              testing::ContainsRegex("\"Mute\"[^\n]*\"state\":\"failing\""));
  EXPECT_THAT(run({"watch", "--once", "--robot", path}).out,
              testing::ContainsRegex("\nTwice +failing +it could not be built: "));
}

TEST(Check, aMistakeInTheDescriptionIsReportedAndExitsWith1) {
  const test::TemporaryFolder folder;
  const auto path = folder.write("robot.urdf", R"(<robot name="tiny"><kind code="1"/>
    <link name="base"/><sensor name="Front" type="Sonor"/></robot>)");
  const Result result = run({"check", "--robot", path});
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.out, HasSubstr("In the description: Front: "));
  EXPECT_THAT(result.out, HasSubstr("Sonor"));
}

TEST(Check, aRobotThatCantBeBuiltIsReportedWithTheMistakesOfItsDescription) {
  const test::TemporaryFolder folder;
  const auto path = folder.write("robot.urdf", R"(<robot name="tiny"><kind code="1"/>
    <link name="base"/>
    <sensor name="Touch" type="Touch"><property key="limits" value="age=1s"/></sensor>
    <sensor name="C" type="4"><property key="cameraName" value="nose"/></sensor></robot>)");
  for (const char* const format : {"table", "json"}) {
    const Result result = run({"check", "--robot", path, "--format", format});
    EXPECT_NE(result.status, 0);
    EXPECT_THAT(result.error, HasSubstr("no sensor, joint or link is called \"nose\""));
    EXPECT_THAT(result.out, testing::ContainsRegex("age=1s.*a number above 0, or off, expected"));
  }
}

TEST(Check, showsATable) {
  const Result result =
      run({"check", "--robot", session::findSharedFile("descriptions/porter.urdf"), "--subscribe",
           "Touch", "--subscribe", "Laser", "--fault", "FrontLaser:off", "--fault",
           "BackBumper:wrong"});
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.out,
              HasSubstr("FrontLaser  Laser   failed to start  failing        0       0  Time"));
  EXPECT_THAT(result.out, testing::ContainsRegex("Touch +Touch +works .* touched: BackBumper\n"));
  EXPECT_THAT(result.out, HasSubstr("\n3 of 4 sensors work.\n"));
}

}  // namespace
}  // namespace QV::app
