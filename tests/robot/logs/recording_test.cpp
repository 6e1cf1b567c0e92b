#include "robot/logs/internal/recording.h"

#include <cmath>

#include "platform/model/model_utils.h"
#include "tests/support/temporary_folder.h"
#include "tests/support/vocabulary.h"

namespace QV::robot {
namespace {

constexpr float kPi = 3.14159265f;
const std::string kScan = "FLASER 3 1.0 2.0 81.83 1 3 1.570796 1 2 1.570796 100.5 host 0\n";

struct RecordingTest : testing::Test {
  Recording readLidar(const std::string& text) const {
    return readLidarLog(folder.write("run.log", text));
  }
  Recording readSonar(const std::string& measurements, const std::string& poses) const {
    return readSonarLog(folder.write("m.txt", measurements), folder.write("p.txt", poses));
  }

  test::TemporaryFolder folder;
};

TEST_F(RecordingTest, aScanIsAStepOfPointsFromRightToLeft) {
  const Recording sut = readLidar(
      "# made by hand\r\n\nPARAM robot_length 0.5 host 0\n"
      "ODOM 1 2 1.570796 0.1 -0.2 0 100.4 host 0\n" +
      kScan + "  FLASER 3 0 1e-1\t5 1 3 7.853982 1 2 1.570796 100.750001 host 0.25");
  ASSERT_EQ(sut.steps.size(), 2u);
  EXPECT_THAT(sut.steps[0].values,
              ElementsAre(FloatNear(0, 1e-6f), -1.0f, 2.0f, FloatNear(0, 1e-6f),
                          FloatNear(0, 1e-5f), FloatNear(81.83f, 1e-5f)));
  EXPECT_EQ(sut.steps[0].pose, Math::Pose2D(1.0f, 2.0f, 1.570796f));
  EXPECT_EQ(sut.steps[0].time, ko::Duration(0));
  EXPECT_EQ(sut.steps[1].time, ko::Duration(250'001'000));
  EXPECT_EQ(sut.steps[1].values[2], 0.1f);
  // An even number of beams leaves the last edge out.
  const Recording even = readLidar("FLASER 4 1 1 1 1 0 0 0 0 0 0 1 host 0\n");
  EXPECT_THAT(even.steps.at(0).values[4], 1.0f);
  EXPECT_NEAR(even.steps[0].values[6], std::sqrt(0.5f), 1e-6f);
}

TEST_F(RecordingTest, aDescriptionIsReadBackAsTheRobotThatDrove) {
  const Model::Robot robot = Model::ModelUtils::robotFromXml(readLidar(kScan).toDescription());
  EXPECT_EQ(robot.kindCode, 1);
  const Model::SensorConfig& laser = robot.sensorConfigs.at("Laser");
  EXPECT_EQ(laser.type, 8);
  EXPECT_EQ(laser.properties.at("maximumDetectionDistance"), "80");
  EXPECT_THAT(laser.memoryKeys, ElementsAre("Laser/Point0/X", "Laser/Point0/Y", "Laser/Point1/X",
                                            "Laser/Point1/Y", "Laser/Point2/X", "Laser/Point2/Y"));
  // The laser is one metre north of a robot that looks north.
  EXPECT_NEAR(laser.origin(0, 3), 1.0f, 1e-6f);
  EXPECT_NEAR(laser.origin(1, 3), 0.0f, 1e-6f);
  EXPECT_NEAR(laser.origin(0, 0), 1.0f, 1e-6f);
}

TEST_F(RecordingTest, malformedLidarLogsAreRefusedByLine) {
  const std::string upTo = " from 0.0 to 1e+06 expected, ";
  const auto scanAt = [](const std::string& time) {
    return "FLASER 3 1 1 1 1 3 1.570796 1 2 1.570796 " + time + " h 0\n";
  };
  std::string manyWords;
  for (int i = 0; i < 16'384; ++i) manyWords += " 1";
  const std::pair<std::string, std::string> cases[] = {
      {"", "no FLASER line found"},
      {"\nflaser 1\n", "line 2: FLASER or ODOM expected, \"flaser\" found"},
      {"FLASER\n", "line 1: a number of ranges expected"},
      {"FLASER 3.0\n", "line 1: a number of ranges from 2 to 10000 expected, \"3.0\" found"},
      {"FLASER 99999999999999999999999 0\n",
       "line 1: a number of ranges from 2 to 10000 expected, \"99999999999999999999\" found"},
      {"FLASER 3 1 1\n", "line 1: 14 words expected, 4 found"},
      {"PARAM" + manyWords, "line 1: at most 16384 words expected, more found"},
      {"PARAM" + manyWords.substr(2), "no FLASER line found"},
      {"FLASER 2 1 -1 0 0 0 0 0 0 1 h 0\n", "line 1: a range in metres" + upTo + "\"-1\" found"},
      {"FLASER 2 1,5 1 0 0 0 0 0 0 1 h 0\n", "line 1: a range in metres" + upTo + "\"1,5\" found"},
      {"FLASER 2 1 1 0 0 0 inf 0 0 1 h 0\n",
       "line 1: x from -1e+06 to 1e+06 expected, \"inf\" found"},
      {"FLASER 2 1 1 0 0 0 0 0 0 -1 h 0\n",
       "line 1: a time in seconds from 0.0 to 4e+09 expected, \"-1\" found"},
      {kScan + "FLASER 2 1 1 1 3 1.570796 1 2 1.570796 101 h 0\n",
       "line 2: 3 ranges expected as in line 1"},
      {kScan + "FLASER 3 1 1 1 1.1 3 1.570796 1 2 1.570796 101 h 0\n",
       "line 2: a laser at the same place on the robot expected as in line 1"},
      {kScan + scanAt("101") + scanAt("100.9"),
       "line 3: a time not before that of the scan before expected, \"100.9\" found"},
      {kScan + "ODOM 1 2 3\n", "line 2: 10 words expected, 4 found"},
      {kScan + "ODOM 1 2 3 ! 0 0 100 h 0\n",
       "line 2: a velocity or acceleration from -1e+06 to 1e+06 expected, \"!\" found"},
      {kScan + "ODOM 1 2 3 0 0 ? 100 h 0\n",
       "line 2: a velocity or acceleration from -1e+06 to 1e+06 expected, \"?\" found"},
  };
  for (const auto& [text, expected] : cases) {
    const std::string error = errorOf([&, &log = text] { readLidar(log); });
    EXPECT_EQ(error, (folder / "run.log") + ": " + expected);
  }
  EXPECT_EQ(errorOf([&] { readLidarLog(folder / "none.log"); }),
            (folder / "none.log") + ": a readable file expected: No such file or directory");
}

TEST_F(RecordingTest, aSonarLogIsReadInMetresAndRadians) {
  const Recording sut = readSonar("1000 5110 0 3 4 5 6 7 400\n1215 10 20 30 40 50 60 70 80\n",
                                  "1000 0 0 900\n1215 -1500 250 3599\n");
  ASSERT_EQ(sut.steps.size(), 2u);
  EXPECT_EQ(sut.steps[0].values.front(), 5.11f);
  EXPECT_EQ(sut.steps[0].values.back(), 0.4f);
  EXPECT_EQ(sut.steps[0].pose, Math::Pose2D(0.0f, 0.0f, kPi / 2));
  EXPECT_EQ(sut.steps[1].time, boost::chrono::milliseconds(215));
  EXPECT_EQ(sut.steps[1].pose.x, -1.5f);
  EXPECT_NEAR(sut.steps[1].pose.theta, -kPi / 1800, 1e-7f);
  const Model::Robot robot = Model::ModelUtils::robotFromXml(sut.toDescription());
  ASSERT_EQ(robot.sensorConfigs.size(), 8u);
  const float degrees[] = {-90.0f, -37.5f, -22.5f, -7.5f, 7.5f, 22.5f, 37.5f, 90.0f};
  for (int i = 0; i < 8; ++i) {
    const std::string name = "Sonar" + std::to_string(i);
    const Model::SensorConfig& sonar = robot.sensorConfigs.at(name);
    const Math::Pose2D pose = Math::pose2DFromTransform(sonar.origin);
    EXPECT_NEAR(pose.theta, degrees[i] * kPi / 180.0f, 1e-6f);
    EXPECT_EQ(Math::position2DFromPose2D(pose), Math::Position2D());
    EXPECT_THAT(sonar.memoryKeys, ElementsAre(name + "/Range"));
  }
}

TEST_F(RecordingTest, malformedSonarLogsAreRefusedByFileAndLine) {
  const std::string m = folder / "m.txt";
  const std::string p = folder / "p.txt";
  const std::string good = "5 1 2 3 4 5 6 7 8\n";
  struct Case {
    std::string measurements;
    std::string poses;
    std::string expected;
  };
  const Case cases[] = {
      {"", "", m + ": no line found"},
      {"5 1 2 3\n", "", m + ": line 1: 9 words expected, 4 found"},
      {"5 1 2 3 -4 5 6 7 8\n", "",
       m + ": line 1: a range in millimetres from 0 to 2000000000 expected, \"-4\" found"},
      {"5 1 2 3 4.5 5 6 7 8\n", "",
       m + ": line 1: a range in millimetres from 0 to 2000000000 expected, \"4.5\" found"},
      {"x 1 2 3 4 5 6 7 8\n", "",
       m + ": line 1: a time in milliseconds from 0 to 2000000000 expected, \"x\" found"},
      {good, "5 0 0\n", p + ": line 1: 4 words expected, 3 found"},
      {good, "5 0 0 0.5\n",
       p + ": line 1: a heading in tenths of a degree from -2000000000 to 2000000000 expected, "
           "\"0.5\" found"},
      {good, "6 0 0 0\n", p + ": line 1: the time 5 of " + m + " expected, \"6\" found"},
      {good + good, "5 0 0 0\n",
       p + ": as many lines as in " + m + " expected, the file ends before"},
      {good, "5 0 0 0\n6 0 0 0\n",
       m + ": as many lines as in " + p + " expected, the file ends before"},
      {good + "4 1 2 3 4 5 6 7 8\n", "5 0 0 0\n4 0 0 0\n",
       m + ": line 2: a time not before that of the line before expected, \"4\" found"},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(errorOf([&] { readSonar(c.measurements, c.poses); }), c.expected);
  }
}

}  // namespace
}  // namespace QV::robot
