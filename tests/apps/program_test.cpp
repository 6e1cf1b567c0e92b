#include <csignal>
#include <filesystem>
#include <fstream>
#include <set>
#include <sys/stat.h>
#include <thread>
#include <vector>

#include <opencv2/imgcodecs.hpp>

#include "session/shared_files.h"
#include "tests/apps/run_program.h"
#include "tests/support/temporary_folder.h"
#include "tests/support/vocabulary.h"

namespace QV::app {
namespace {

struct ProgramTest : testing::Test {
  /** A description with these sensors. */
  std::string robotOf(const std::string& sensors) {
    return folder.write(std::to_string(++robots) + "robot.urdf",
                        "<robot name='r'><link name='base'/>" + sensors + "</robot>");
  }

  const test::TemporaryFolder folder;
  int robots = 0;
  const std::string porter = session::findSharedFile("descriptions/porter.urdf");
};

TEST_F(ProgramTest, listShowsEverySensorOfAKindWithItsMounting) {
  const Result result = run({"list", "--kind", "1"});
  EXPECT_EQ(result.status, 0) << result.error;
  EXPECT_THAT(result.out, testing::ContainsRegex("Asus +CameraDepth +0.5 +8 +1.000 +100 "));
  EXPECT_THAT(result.out, testing::ContainsRegex("Sonar +Sonar/Back .* 0.00 +0.00 +3.142"));
  EXPECT_EQ(run({"list", "--kind", "-1"}).status, 0);
}

TEST_F(ProgramTest, listShowsWhatADescriptionHolds) {
  const auto path =
      folder.write("robot.urdf", R"(<robot name="tiny"><kind code="1"/><link name="base">
    <collision><geometry><mesh filename="base.stl"/></geometry></collision>
    <collision name="mast"><geometry><cylinder radius="0.1" length="1"/></geometry></collision></link>
    <sensor name="Front" type="9"><origin xyz="0.5 0 0.25" rpy="0 0 0"/>
      <property key="maximumDetectionDistance" value="2.5 m"/><memory_key>K</memory_key></sensor>
    <sensor name="Spare" type="7"/></robot>)");
  const Result result = run({"list", "--robot", path});
  ASSERT_EQ(result.status, 0) << result.error;
  EXPECT_THAT(result.out, testing::ContainsRegex(
                              "Sonar +Front +9 +0.00 +2.50 +0.000 +1 +base +0.50 +0.00 +0.25"));
  EXPECT_THAT(result.out, testing::ContainsRegex("\\(none\\) +Spare +7 "));
  EXPECT_THAT(result.out, testing::ContainsRegex("base#0 +mesh +\\(root\\) +not supported"));
  EXPECT_THAT(result.out, testing::ContainsRegex("mast +cylinder +\\(root\\)\n"));
}

TEST_F(ProgramTest, listAsJsonIsOneObject) {
  const auto simulated =
      nlohmann::json::parse(run({"list", "--kind", "0", "--format", "json"}).out);
  EXPECT_EQ(simulated["sensors"][1]["name"], "RightSonar");
  EXPECT_EQ(simulated["sensors"][1]["fieldOfView"]["rayCount"], 20);
  const auto described =
      nlohmann::json::parse(run({"list", "--robot", porter, "--format", "json"}).out);
  EXPECT_EQ(described["robot"], "porter");
  const auto& sonar = described["sensors"][1];
  EXPECT_EQ(sonar["name"], "BackSonar");
  EXPECT_EQ(sonar["family"], "Sonar");
  EXPECT_EQ(sonar["mounting"]["x"], -0.13);
  EXPECT_EQ(sonar["link"], "torso");
  EXPECT_EQ(sonar["subscribeTo"], "BackSonar");
  EXPECT_EQ(described["sensors"][0]["name"], "BackBumper");
  EXPECT_EQ(described["sensors"][0]["subscribeTo"], "Touch");
  EXPECT_EQ(described["sensors"].back()["name"], nullptr);
  EXPECT_EQ(described["sensors"].back()["subscribeTo"], "PeoplePerception");
  EXPECT_EQ(described["collisionShapes"][0]["supported"], true);
  EXPECT_EQ(run({"list", "--robot", robotOf(""), "--format", "json"}).out,
            R"({"robot":"r","kind":0,"sensors":[],"collisionShapes":[]})"
            "\n");
}

TEST_F(ProgramTest, readWritesWhatWasSubscribedTo) {
  const Result result = run({"read", "--kind", "1", "--pose", "3,3,-0.5", "--subscribe",
                             "Sonar/Front", "--subscribe", "Asus", "--format", "json"});
  ASSERT_EQ(result.status, 0) << result.error;
  const auto records = recordsIn(result.out);
  ASSERT_EQ(records.size(), 2u);
  EXPECT_EQ(records[0]["sensorName"], "CameraDepth");
  EXPECT_EQ(records[0]["points"].size(), 100u);
  EXPECT_EQ(records[1]["sensorName"], "Sonar/Front");
}

TEST_F(ProgramTest, readOfAnVirtualRobotWaitsForEverySensor) {
  const Result result = run({"read", "--robot", porter, "--pose", "3,6.3,0", "--noise", "0.01",
                             "--seed", "7", "--format", "json"});
  ASSERT_EQ(result.status, 0) << result.error;
  std::set<std::string> families;
  for (const auto& record : recordsIn(result.out)) {
    families.insert(record["familyName"]);
    EXPECT_EQ(record["frame"], "robot");
    if (record["sensorName"] != "FrontSonar") continue;
    EXPECT_EQ(record["sensorTransform"][3], 0.13);
  }
  EXPECT_THAT(families,
              testing::ElementsAre("Asus", "BlindZone", "HoleLaser", "Laser", "Shovel", "Sonar"));
}

TEST_F(ProgramTest, aFaultySensorGivesNothingAndSaysWhy) {
  const Result result = run({"read", "--robot", porter, "--pose", "3,6.3,0", "--subscribe", "Laser",
                             "--fault", "FrontLaser:off"});
  EXPECT_EQ(result.status, 0);
  EXPECT_THAT(result.out, testing::Not(HasSubstr("FrontLaser")));
  EXPECT_THAT(result.out, HasSubstr("LeftLaser"));
  EXPECT_THAT(result.error, HasSubstr("Timeout while setting operation Mode for FrontLaser"));
}

TEST_F(ProgramTest, badInputIsOneLineAndStatus2) {
  const auto missing = folder / "none.yaml";
  const BadInput cases[] = {
      {{},
       "a command expected; the commands are list, read, plot, drive, check, watch, serve, replay"},
      {{"serve", "--address", "nowhere"}, "--address: an IP address expected"},
      {{"fly"}, "no command \"fly\"; the commands are list, read, plot, drive"},
      {{"read"}, "--pose is required"},
      {{"read", "--pose", "1,2,3", "--format", "xml"}, "--format: table, json or csv"},
      {{"read", "--pose", "1,2,3", "--subscribe", "Radar"},
       "no sensor or family \"Radar\"; this robot has the families Asus, Bumper, Sonar"},
      {{"read", "--pose", "1,2,3", "--kind", "2"}, "--kind: a kind with simulated sensors"},
      {{"read", "--pose", "1,2,3", "--kind", "x"},
       "x, a number expected (see qvsensors read --help)"},
      {{"read", "--pose", "1,2,3", "--map", ""}, "--map: a file expected"},
      {{"list", "--robot", ""}, "--robot: a file expected"},
      {{"list", "--robot", "portr"}, "--robot: a path, or one of porter expected, \"portr\""},
      {{"plot", "--pose", "1,2,3", "-o", ""}, "--output: a file expected"},
      {{"drive", "--path", "1,2 2,2", "--picture", ""}, "--picture: a file expected"},
      {{"drive", "--path", "1,2 2,2", "--picture", "/nowhere/run.png"},
       "/nowhere/run.png: can't be written"},
      {{"read", "--pose", "1,2,3", "--map", missing}, missing},
      {{"plot", "--pose", "1,2,3", "-o", folder / "scan.xyz"}, "scan.xyz"},
      {{"list", "--robot", missing}, missing + ": a readable file expected"},
      {{"list", "--robot", folder.string()}, "a readable file expected"},
      {{"list", "--robot", missing, "--kind", "1"}, "excludes"},
      {{"list", "--format", "csv"}, "--format: table or json expected, \"csv\" given"},
      {{"read", "--pose", "3,3,0", "--fault", "Sonar:off"}, "--fault requires --robot"},
      {{"read", "--robot", porter, "--pose", "3,3,0", "--fault", "FrontSonar:dead"},
       "--fault: off, stuck, garbage, wrong, slow, delayed or intermittent expected, \"dead\""},
      {{"read", "--robot", porter, "--pose", "3,3,0", "--fault", "Radar:off"},
       "--fault: no sensor \"Radar\" that can fail"},
      {{"read", "--robot", porter, "--pose", "3,3,0", "--noise", "-1"},
       "qvsensors: --noise: metres from 0 on expected"},
      {{"read", "--robot", porter, "--pose", "3,3,0", "--drop-outs", "2"},
       "qvsensors: --drop-outs: a share from 0 to 1 expected"},
      {{"read", "--robot", porter, "--pose", "3,3,0", "--people", "-1"},
       "qvsensors: --people: a number from 0 on expected"},
      {{"check", "--robot", robotOf("")}, "robot.urdf: a sensor expected"},
      {{"check", "--robot",
        robotOf("<sensor name='C' type='4'><property key='cameraName' "
                "value='nose'/></sensor>")},
       "apartment.yaml: no sensor, joint or link is called \"nose\""},
      {{"drive", "--path", "1,2 2,2", "--rate", "0"}, "--rate: a number above 0"},
      {{"drive", "--path", "1,2 2,2", "-o", folder / "none/r.jsonl"}, "r.jsonl"},
  };
  for (const BadInput& c : cases) expectRefused(c);
}

TEST_F(ProgramTest, aPoseThatIsNotFreeIsWarnedOfAndRead) {
  const Result result = run({"read", "--pose", "-90,-90,0", "--format", "json"});
  EXPECT_EQ(result.status, 0);
  EXPECT_THAT(result.error, HasSubstr("warning: the pose -90,-90 lies outside the map"));
  EXPECT_EQ(recordsIn(result.out).size(), 6u);
}

TEST_F(ProgramTest, drivingIntoAWallIsWarnedOfOnce) {
  const Result result = run({"drive", "--path", "3,6.3 3,7.2 3,6.3"});
  EXPECT_EQ(result.status, 0);
  EXPECT_THAT(result.error, HasSubstr("lies in a cell that is not free"));
  EXPECT_LE(std::count(result.error.begin(), result.error.end(), '\n'), 2) << result.error;
}

TEST_F(ProgramTest, everyCommandHasHelp) {
  for (const char* command : {"list", "read", "plot", "drive", "check", "watch"}) {
    const Result result = run({command, "--help"});
    EXPECT_EQ(result.status, 0);
    EXPECT_THAT(result.out, HasSubstr("--kind"));
  }
  EXPECT_THAT(run({"replay", "--help"}).out, HasSubstr("CARMEN log"));
}

TEST_F(ProgramTest, plotWritesAPictureHoweverFarFromTheMap) {
  for (const char* pose : {"3,3,1", "1e4,0,0", "1e13,1e13,1"}) {
    const auto path = folder / "scan.png";
    const Result result = run({"plot", "--pose", pose, "-o", path});
    ASSERT_EQ(result.status, 0) << result.error;
    const cv::Mat image = cv::imread(path);
    EXPECT_GT(image.cols, 1000) << pose;
    EXPECT_GT(image.rows, 500) << pose;
    std::filesystem::remove(path);
  }
}

TEST_F(ProgramTest, anInterruptedDriveFinishesItsFileAndSaysSo) {
  const auto pipe = folder / "records.jsonl";
  ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
  std::string records;
  std::thread reader([&] {
    std::ifstream file(pipe);
    std::getline(file, records);
    records += '\n';
    std::raise(SIGINT);
    records.append(std::istreambuf_iterator<char>(file), {});
  });
  // Far more than the pipe holds, so that the interruption comes in the middle.
  const Result result = run({"drive", "--path", "3,3 4,3", "--rate", "100000", "-o", pipe});
  reader.join();
  EXPECT_EQ(result.status, 128 + SIGINT);
  EXPECT_THAT(result.out, HasSubstr("Interrupted after "));
  const auto whole = recordsIn(records);
  EXPECT_EQ(whole.size() % 6, 0u);
  EXPECT_LT(whole.size(), 6u * 200'000u);
}

TEST_F(ProgramTest, driveReadsEveryCycleOfSimulatedTimeTheSameEachTime) {
  const auto first = folder / "a.jsonl";
  const auto second = folder / "b.jsonl";
  for (const auto& path : {first, second}) {
    const Result result = run({"drive", "--kind", "0", "--path", "3,3 4,3 4,4", "--rate", "5",
                               "--speed", "1", "--turn-speed", "1", "-o", path});
    ASSERT_EQ(result.status, 0) << result.error;
    EXPECT_THAT(result.out, testing::ContainsRegex("LeftSonar +Sonar +19 "));
  }
  const auto records = recordsIn(test::readBytes(first));
  ASSERT_EQ(records.size(), 2u * 19u);
  EXPECT_EQ(records.back()["timestamp"], 3'600'000'000);
  EXPECT_NEAR(records.back()["sensorTransform"][7].get<double>(), 4.0, 1e-6);
  EXPECT_EQ(test::readBytes(first), test::readBytes(second));
}

TEST_F(ProgramTest, anVirtualRobotDrivesThePathTheSameEachTime) {
  const auto path = folder / "a.jsonl";
  const auto picture = folder / "robot.png";
  std::string before;
  for (const char* seed : {"3", "3", "4"}) {
    const Result result =
        run({"drive", "--robot", porter, "--path", "3,6.3 4,6.3 4,5.6", "--subscribe", "Sonar",
             "--noise", "0.02", "--seed", seed, "-o", path, "--picture", picture});
    ASSERT_EQ(result.status, 0);
    EXPECT_EQ(result.error, "");
    EXPECT_THAT(result.out, testing::ContainsRegex("FrontSonar +Sonar +56 "));
    const std::string written = test::readBytes(path);
    EXPECT_EQ(written == before, before.empty() ? false : std::string(seed) == "3");
    before = written;
  }
  EXPECT_GT(cv::imread(picture).cols, 1000);
}

TEST_F(ProgramTest, anVirtualRobotThatIsStoppedByAWallSaysSo) {
  const Result result =
      run({"drive", "--robot", porter, "--path", "3,6.3 3,9", "--subscribe", "Touch"});
  EXPECT_EQ(result.status, 0);
  EXPECT_THAT(result.error, HasSubstr("warning: the robot stands "));
  EXPECT_THAT(result.out, testing::ContainsRegex("FrontBumper +Touch "));
}

}  // namespace
}  // namespace QV::app
