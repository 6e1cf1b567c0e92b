#include <csignal>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <set>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <thread>
#include <vector>

#include <opencv2/imgcodecs.hpp>

#include "apps/output/lines.h"
#include "session/shared_files.h"
#include "tests/apps/run_program.h"
#include "tests/support/child_process.h"
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

TEST_F(ProgramTest, listShowsTheContentOfADescription) {
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
                              "Sonar +Front +Sonar +0.00 +2.50 +0.000 +1 +base +0.50 +0.00 +0.25"));
  EXPECT_THAT(result.out, testing::ContainsRegex("\\(none\\) +Spare +7 "));
  EXPECT_THAT(result.out, testing::ContainsRegex("base#0 +mesh +\\(root\\) +not supported"));
  EXPECT_THAT(result.out, testing::ContainsRegex("mast +cylinder +\\(root\\)\n"));
}

TEST_F(ProgramTest, listAsJsonIsOneObject) {
  const auto simulated =
      nlohmann::json::parse(run({"list", "--kind", "0", "--format", "json"}).out);
  EXPECT_EQ(simulated["sensors"][1]["sensorName"], "RightSonar");
  EXPECT_EQ(simulated["sensors"][1]["fieldOfView"]["rayCount"], 20);
  const auto described =
      nlohmann::json::parse(run({"list", "--robot", porter, "--format", "json"}).out);
  EXPECT_EQ(described["robot"], "porter");
  const auto& sonar = described["sensors"][1];
  EXPECT_EQ(sonar["describedAs"], "BackSonar");
  EXPECT_EQ(sonar["familyName"], "Sonar");
  EXPECT_EQ(sonar["mounting"]["x"], -0.13);
  EXPECT_EQ(sonar["link"], "torso");
  EXPECT_EQ(sonar["sensorName"], "BackSonar");
  EXPECT_EQ(described["sensors"][0]["describedAs"], "BackBumper");
  EXPECT_EQ(described["sensors"][0]["sensorName"], "Touch");
  EXPECT_EQ(described["sensors"].back()["describedAs"], nullptr);
  EXPECT_EQ(described["sensors"].back()["sensorName"], "PeoplePerception");
  const auto lines = recordsIn(run({"list", "--robot", porter, "--format", "jsonl"}).out);
  EXPECT_EQ(nlohmann::json(lines), described["sensors"]);
  EXPECT_EQ(described["collisionShapes"][0]["supported"], true);
  EXPECT_EQ(run({"list", "--robot", robotOf(""), "--format", "json"}).out,
            R"({"robot":"r","kind":0,"sensors":[],"collisionShapes":[]})"
            "\n");
}

TEST_F(ProgramTest, readWritesTheSubscribedSensors) {
  const Result result = run({"read", "--kind", "1", "--pose", "3,3,-0.5", "--subscribe",
                             "Sonar/Front", "--subscribe", "Asus", "--format", "jsonl"});
  ASSERT_EQ(result.status, 0) << result.error;
  const auto records = recordsIn(result.out);
  ASSERT_EQ(records.size(), 2u);
  EXPECT_EQ(records[0]["sensorName"], "CameraDepth");
  EXPECT_EQ(records[0]["points"].size(), 100u);
  EXPECT_EQ(records[1]["sensorName"], "Sonar/Front");
}

TEST_F(ProgramTest, readOfAVirtualRobotWaitsForEverySensor) {
  const Result result = run({"read", "--robot", porter, "--pose", "3,6.3,0", "--noise", "0.01",
                             "--seed", "7", "--format", "jsonl"});
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

TEST_F(ProgramTest, aSensorThatCouldNotBeBuiltIsReportedAndExitsWith1) {
  const std::string robot = folder.write("robot.urdf", R"(<robot name="tiny"><kind code="1"/>
    <link name="base"/><sensor name="Mute" type="Sonar"/>
    <sensor name="Front" type="Sonar"><property key="minimumDetectionDistance" value="0.2"/>
    <property key="maximumDetectionDistance" value="3"/>
    <property key="horizontalAngularRange" value="0.9"/><memory_key>Range</memory_key></sensor>
    </robot>)");
  for (const std::vector<std::string>& command :
       std::vector<std::vector<std::string>>{{"read"},
                                             {"plot", "-o", folder / "scan.png"},
                                             {"stream", "--for", "1", "--speed", "max"},
                                             {"watch", "--once"},
                                             {"drive", "--path", "3,6.3 3.2,6.3"}}) {
    const auto runFor = [&](const char* asked) {
      std::vector<std::string> arguments = command;
      arguments.insert(arguments.end(), {"--robot", robot, "--subscribe", asked});
      return run(arguments);
    };
    const Result family = runFor("Sonar");
    EXPECT_EQ(family.status, 1) << command[0];
    EXPECT_THAT(family.error, HasSubstr("qvsensors: Mute gave no record: it could not be built"));
    EXPECT_EQ(runFor("Front").status, 0) << command[0];
  }
  EXPECT_THAT(run({"check", "--robot", robot, "--subscribe", "Sonar"}).out,
              testing::ContainsRegex("\nMute +Sonar +could not be built +failing"));
  EXPECT_THAT(run({"check", "--robot", robot, "--subscribe", "Front"}).out,
              Not(HasSubstr("\nMute  ")));
}

TEST_F(ProgramTest, aSensorWithoutRecordsIsReportedAndExitsWith1) {
  const std::string why = "Timeout while setting operation Mode for FrontLaser";
  const std::vector<std::string> world{"--robot", porter,    "--subscribe",
                                       "Laser",   "--fault", "FrontLaser:off"};
  for (const std::vector<std::string>& command : std::vector<std::vector<std::string>>{
           {"read", "--pose", "3,6.3,0"},
           {"plot", "--pose", "3,6.3,0", "-o", folder / "scan.png"},
           {"stream", "--for", "2", "--speed", "max"},
           {"drive", "--path", "3,6.3 3.2,6.3"}}) {
    std::vector<std::string> arguments = command;
    arguments.insert(arguments.end(), world.begin(), world.end());
    const Result result = run(arguments);
    EXPECT_EQ(result.status, 1) << command[0];
    EXPECT_THAT(result.error, HasSubstr("qvsensors: FrontLaser gave no record: " + why));
    const bool hasTable = command[0] == "read" || command[0] == "drive";
    if (!hasTable) continue;
    EXPECT_THAT(result.out, testing::ContainsRegex("\nFrontLaser +Laser .* +- .*" + why));
    EXPECT_THAT(result.out, HasSubstr("\nLeftLaser"));
  }
}

TEST_F(ProgramTest, aSensorThatMayBeSilentIsNoFailure) {
  const Result result = run({"read", "--robot", porter, "--subscribe", "Touch"});
  EXPECT_EQ(result.status, 0) << result.error;
}

TEST_F(ProgramTest, badInputIsOneLineAndStatus2) {
  const auto missing = folder / "none.yaml";
  const BadInput cases[] = {
      {{},
       "a command expected; the commands are list, read, plot, drive, check, watch, serve, replay"},
      {{"serve", "--address", "nowhere"}, "--address: an IP address expected"},
      {{"fly"}, "no command \"fly\"; the commands are list, read, plot, drive"},
      {{"read", "--pose", "1,2,3", "--format", "xml"}, "--format: table, json, jsonl or csv"},
      {{"read", "--pose", "1,2,3", "--subscribe", "Radar"},
       "no sensor or family \"Radar\"; this robot has the families Asus, Bumper, Sonar"},
      {{"read", "--pose", "1,2,3", "--kind", "2"}, "--kind: a kind with simulated sensors"},
      {{"read", "--pose", "1,2,3", "--kind", "x"},
       "x, a number expected (see qvsensors read --help)"},
      {{"read", "--pose", "1,2,3", "--map", ""}, "--map: a file name expected"},
      {{"read", "--shift-origin=1"}, "--shift-origin: x,y in metres expected, \"1\" given"},
      {{"read", "--from-ros2", "--shift-origin"}, "--from-ros2 excludes --shift-origin"},
      {{"list", "--robot", ""}, "--robot: a file name expected"},
      {{"list", "--robot", "portr"}, "--robot: a path, or one of porter expected, \"portr\""},
      {{"plot", "--pose", "1,2,3", "-o", ""}, "--output: a file name expected"},
      {{"drive", "--path", "1,2 2,2", "--picture", ""}, "--picture: a file name expected"},
      {{"drive", "--path", "1,2 2,2", "--picture", "/nowhere/run.png"},
       "/nowhere/run.png: can't be written: No such file or directory"},
      {{"read", "--pose", "1,2,3", "--map", missing}, missing},
      {{"plot", "--pose", "1,2,3", "-o", folder / "scan.xyz"}, "scan.xyz"},
      {{"list", "--robot", missing}, missing + ": a readable file expected"},
      {{"list", "--robot", folder.string()}, "a readable file expected"},
      {{"list", "--robot", missing, "--kind", "1"}, "excludes"},
      {{"list", "--format", "csv"}, "--format: table, json or jsonl expected, \"csv\" given"},
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
       "qvsensors: --people: a whole number from 0 to 1000 expected, \"-1\" given"},
      {{"read", "--robot", porter, "--people", "3.5"},
       "--people: a whole number from 0 to 1000 expected, \"3.5\" given"},
      {{"read", "--robot", porter, "--seed", "-4"},
       "--seed: a whole number from 0 to 18446744073709551615 expected, \"-4\" given"},
      {{"serve", "--port", "99999"},
       "--port: a whole number from 0 to 65535 expected, \"99999\" given"},
      {{"drive", "--paht", "1,2 2,2"},
       "no option --paht; did you mean --path? (see qvsensors drive --help)"},
      {{"drive", "--people", "x", "--wings=2"}, "no option --wings (see"},
      {{"--pose", "1,2,3", "read"}, "--pose: put options after the command"},
      {{"read", "--noise"}, "--noise: a value expected (FLOAT) (see qvsensors read --help)"},
      {{"map"}, "a command expected; the commands are info (see qvsensors map --help)"},
      {{"map", "info", "--depth"}, "no option --depth (see qvsensors map info --help)"},
      {{"map", "info", "moon"}, "MAP: a path, or one of apartment expected, \"moon\" given"},
      {{"read", "--log-level", "loud"},
       "--log-level: silent, fatal, error, warning, info or verbose expected, \"loud\" given"},
      {{"help", "fly"}, "no command \"fly\"; the commands are list, "},
      {{"help", "read", "fly"}, "qvsensors read has no commands, \"fly\" given"},
      {{"completion", "csh"}, "SHELL: bash, zsh or fish expected, \"csh\" given"},
      {{"stream", "--speed", "0"}, "--speed: a number above 0 or max expected, \"0\" given"},
      {{"stream", "--rate", "1e300"}, "up to 1000000 expected, 1e+300 given"},
      {{"read", "--robot", porter, "--subscribe", "FrontBumper"},
       "--subscribe: FrontBumper is a part of the sensor Touch; name Touch instead"},
      {{"check", "--robot", robotOf("")}, "robot.urdf: the robot has no sensors"},
      {{"check", "--robot",
        robotOf("<sensor name='C' type='4'><property key='cameraName' "
                "value='nose'/></sensor>")},
       "apartment.yaml: no sensor, joint or link is called \"nose\""},
      {{"drive", "--path", "1,2 2,2", "--rate", "0"}, "--rate: a number above 0"},
      {{"drive", "--path", "1,2 2,2", "-o", folder / "none/r.jsonl"},
       "r.jsonl: can't be written: No such file or directory"},
      {{"drive", "--path", "1,2 2,2", "-o", folder / "none/r.mcap"},
       "r.mcap: can't be written: No such file or directory"},
      {{"serve", "--ros2", "--ros2-no-echo", "nan"},
       "--ros2-no-echo: max or inf expected, \"nan\" given"},
      {{"list", "--robot", porter, "-x"}, "no option -x"},
  };
  for (const BadInput& c : cases) expectRefused(c);
}

TEST_F(ProgramTest, withoutAPoseTheRobotStartsAtAFreePlaceThatIsPrinted) {
  const auto info = nlohmann::json::parse(run({"map", "info", "--format", "json"}).out);
  const auto& free = info["freePose"];
  for (const std::vector<std::string>& robot :
       std::vector<std::vector<std::string>>{{"--kind", "0"}, {"--robot", porter}}) {
    std::vector<std::string> arguments{"read", "--subscribe", "Sonar"};
    arguments.insert(arguments.end(), robot.begin(), robot.end());
    const Result result = run(arguments);
    EXPECT_EQ(result.status, 0) << result.error;
    float x = 0.0f;
    float y = 0.0f;
    ASSERT_EQ(std::sscanf(result.error.c_str(), "qvsensors: the robot starts at x,y,theta %f,%f,0",
                          &x, &y),
              2)
        << result.error;
    EXPECT_NEAR(x, free["x"].get<float>(), 1e-4);
    EXPECT_NEAR(y, free["y"].get<float>(), 1e-4);
    arguments.emplace_back("--quiet");
    EXPECT_EQ(run(arguments).error, "");
  }
}

TEST_F(ProgramTest, mapInfoPrintsSizeExtentAndFreeShare) {
  folder.write("m.pgm", "P2 4 2 255 254 254 205 0 254 254 205 0\n");
  const auto path = folder.write("m.yaml",
                                 "image: m.pgm\nresolution: 0.5\norigin: [1, 2, 0]\n"
                                 "negate: 0\noccupied_thresh: 0.65\nfree_thresh: 0.196\n");
  const auto info = nlohmann::json::parse(run({"map", "info", path, "--format", "json"}).out);
  EXPECT_EQ(info["width"], 4);
  EXPECT_EQ(info["height"], 2);
  EXPECT_EQ(info["extent"],
            (nlohmann::json{{"minX", 1.0}, {"maxX", 3.0}, {"minY", 2.0}, {"maxY", 3.0}}));
  EXPECT_EQ(info["free"], 0.5);
  EXPECT_EQ(info["unknown"], 0.25);
  EXPECT_LT(info["freePose"]["x"], 2.0);
  EXPECT_THAT(run({"map", "info", path}).out,
              HasSubstr("4 x 2 cells of 0.5 m, 2.00 x 1.00 m\norigin     1,2,0 (m, m, rad)\n"));
}

TEST_F(ProgramTest, streamWritesEachRecordOnceAndAtOnce) {
  const Result result = run({"stream", "--robot", porter, "--subscribe", "Laser", "--pose",
                             "3,6.3,0", "--for", "2", "--rate", "50", "--speed", "max"});
  EXPECT_EQ(result.status, 0) << result.error;
  const auto records = recordsIn(result.out);
  std::set<std::pair<std::string, std::int64_t>> different;
  for (const auto& record : records) different.emplace(record["sensorName"], record["timestamp"]);
  EXPECT_EQ(different.size(), records.size());
  // Two lasers with a scan every 0.1 s, from their start on.
  EXPECT_GT(records.size(), 20u);
}

TEST_F(ProgramTest, logLinesOfASimulatedWorldHaveSimulatedTime) {
  const Result loud = run({"read", "--robot", porter, "--pose", "3,6.3,0", "--subscribe", "Laser",
                           "--fault", "FrontLaser:off"});
  EXPECT_THAT(loud.error,
              testing::ContainsRegex("\\[[0-9]\\.[0-9][0-9][0-9] s\\] \\[(warning|error)\\]"));
  const Result silent = run({"read", "--robot", porter, "--pose", "3,6.3,0", "--subscribe", "Laser",
                             "--fault", "FrontLaser:off", "--log-level", "silent"});
  EXPECT_THAT(silent.error, testing::StartsWith("qvsensors: FrontLaser gave no record"));
  EXPECT_THAT(run({"check", "--kind", "0", "--log-level", "info"}).error, HasSubstr("[info]"));
}

TEST_F(ProgramTest, anUnwritableStandardOutputIsReportedWithTheReason) {
  for (const std::string command : {"list --kind 0", "help"})
    EXPECT_EQ(shellOutput(QVSENSORS " " + command + " 2>&1 >/dev/full; echo $?"),
              "qvsensors: standard output: can't be written: No space left on device\n2\n");
}

TEST_F(ProgramTest, whatNeedsNoRobotLoadsFewLibraries) {
  const std::vector<std::string> cases[] = {
      {"-V"},     {"help"},           {"map", "info", "--help"}, {"help", "map", "info"},
      {"manual"}, {"manual", "read"}, {"completion", "zsh"}};
  for (const auto& words : cases) {
    std::string command = QVSENSORS;
    for (const auto& word : words) command += " " + word;
    EXPECT_EQ(shellOutput(command), run(words).out) << command;
    const auto loaded = shellOutput("LD_DEBUG=files " + command +
                                    " 2>&1 >/dev/null | grep -c 'generating link map'");
    EXPECT_THAT(std::stoi(loaded), testing::AllOf(testing::Ge(1), testing::Le(12))) << command;
  }
  EXPECT_EQ(shellOutput("COLUMNS=60 " QVSENSORS " help read | grep -c '.\\{61\\}'"), "0\n");
}

TEST_F(ProgramTest, repeatedErrorsAreOneLineWithTheirNumber) {
  const std::vector<std::string> words{
      "stream", "--robot", porter,    "--subscribe", "Touch", "--fault",  "FrontBumper:garbage",
      "--for",  "5",       "--speed", "max",         "-o",    "/dev/null"};
  std::vector<std::string> all = words;
  all.insert(all.end(), {"--log-level", "verbose"});
  const auto countErrors = [](const Result& result) {
    std::istringstream lines(result.error);
    long count = 0;
    for (std::string line; std::getline(lines, line);) count += line.find("[error]") != line.npos;
    return count;
  };
  EXPECT_GE(countErrors(run(all)), 8);
  const Result folded = run(words);
  EXPECT_LE(countErrors(folded), 4) << folded.error;
  EXPECT_THAT(folded.error, testing::ContainsRegex("\\(again, [0-9]+ times\\)\n"));
  // What is counted at the end has the world's time, too.
  EXPECT_THAT(folded.error, Not(testing::ContainsRegex("\\[[0-9]+:[^\n]*again")));
}

TEST_F(ProgramTest, aPoseThatIsNotFreeIsWarnedOfAndRead) {
  const Result result = run({"read", "--pose", "-90,-90,0", "--format", "jsonl"});
  EXPECT_EQ(result.status, 0);
  EXPECT_THAT(result.error, HasSubstr("warning: the pose x,y -90,-90 m lies outside the map"));
  EXPECT_EQ(recordsIn(result.out).size(), 6u);
}

TEST_F(ProgramTest, drivingIntoAWallIsWarnedOfOnce) {
  // So fast that no reading is from within a wall.
  const Result result = run({"drive", "--path", "3,6.3 3,9 3,6.3", "--speed", "100"});
  EXPECT_EQ(result.status, 0);
  EXPECT_THAT(result.error, HasSubstr("m is in an occupied or unknown cell; a robot of --kind"));
  EXPECT_EQ(std::count(result.error.begin(), result.error.end(), '\n'), 1) << result.error;
}

TEST_F(ProgramTest, aProgramWithOwnSensorsSpeaksUnderItsOwnName) {
  const std::string own = "/opt/bin/qvcliff";
  EXPECT_THAT(run({"fly"}, own).error, testing::StartsWith("qvcliff: no command"));
  EXPECT_THAT(run({"read", "--fly"}, own).error, HasSubstr("(see qvcliff read --help)"));
  EXPECT_THAT(run({"completion", "bash"}, own).out, HasSubstr("complete -F _qvcliff qvcliff\n"));
}

TEST_F(ProgramTest, everyCommandHasHelp) {
  for (const char* command : {"list", "read", "plot", "drive", "check", "watch"}) {
    const Result result = run({command, "--help"});
    EXPECT_EQ(result.status, 0);
    EXPECT_THAT(result.out, HasSubstr("--kind"));
  }
  EXPECT_THAT(run({"replay", "--help"}).out, HasSubstr("CARMEN log"));
  EXPECT_THAT(run({"serve", "--help"}).out,
              testing::AllOf(HasSubstr("--use-sim-time[=true|false] use /clock"),
                             HasSubstr("port of the server; 0: any free port (default: 8765)\n")));
  EXPECT_EQ(run({"help", "map", "info"}).out, run({"map", "info", "--help"}).out);
  EXPECT_THAT(run({"help"}).out, HasSubstr("stream"));
  EXPECT_EQ(run({"-V"}).out, run({"--version"}).out);
}

TEST_F(ProgramTest, helpFoldsAtWordsUnderItsText) {
  EXPECT_EQ(foldLines("  --name TEXT" + std::string(17, ' ') +
                          "one two three\n- four five six seven "
                          "eight nine ten eleven\nUsage: a b\n",
                      40),
            "  --name TEXT" + std::string(17, ' ') + "one two\n" + std::string(30, ' ') +
                "three\n- four five six seven eight nine ten\n  eleven\nUsage: a b\n");
  EXPECT_EQ(foldLines(std::string(99, 'x') + "\n", 40), std::string(99, 'x') + "\n");
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

int bytesIn(int pipe) {
  int count = 0;
  ioctl(pipe, FIONREAD, &count);
  return count;
}

/** Starts the program with an output that takes `room` bytes, and waits until they are written and
 * the pose is said. */
void startStuck(test::ChildProcess& process, const char* command, std::size_t room) {
  int out[2];
  int error[2];
  ASSERT_EQ(pipe(out) | pipe(error), 0);
  fcntl(out[1], F_SETFL, O_NONBLOCK);
  while (write(out[1], "full", 4) > 0) continue;
  fcntl(out[1], F_SETFL, 0);
  const int most = bytesIn(out[0]);
  std::string taken(room, '\0');
  ASSERT_EQ(::read(out[0], taken.data(), room), static_cast<ssize_t>(room));
  process.start([&] {
    dup2(out[1], STDOUT_FILENO);
    dup2(error[1], STDERR_FILENO);
    execl(QVSENSORS, QVSENSORS, command, "--kind", "1", nullptr);
  });
  close(out[1]);
  close(error[1]);
  std::ifstream errors("/dev/fd/" + std::to_string(error[0]));
  std::string line;
  std::getline(errors, line);
  EXPECT_THAT(line, HasSubstr("the robot starts at"));
  while (bytesIn(out[0]) < most) std::this_thread::yield();
}

TEST_F(ProgramTest, aSignalEndsWhatHasNothingToFinishAndASecondOneAnyProgram) {
  test::ChildProcess read;
  startStuck(read, "read", 0);
  read.signal(SIGTERM);
  EXPECT_EQ(read.awaitEnd(), -1);
  test::ChildProcess stream;
  // A page of memory: less than one reading. In its middle no signal is looked for.
  startStuck(stream, "stream", 4096);
  while (!stream.hasEnded()) stream.signal(SIGINT);
  EXPECT_EQ(stream.awaitEnd(), -1);
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

TEST_F(ProgramTest, aVirtualRobotDrivesThePathReproducibly) {
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

TEST_F(ProgramTest, aVirtualRobotStoppedByAWallIsReported) {
  const Result result =
      run({"drive", "--robot", porter, "--path", "3,6.3 3,9", "--subscribe", "Touch"});
  EXPECT_EQ(result.status, 1);
  EXPECT_THAT(result.error, HasSubstr("warning: the robot stands "));
  EXPECT_THAT(result.out, testing::ContainsRegex("FrontBumper +Touch "));
}

}  // namespace
}  // namespace QV::app
