#include <algorithm>
#include <cmath>
#include <numbers>
#include <optional>
#include <stdexcept>

#include "robot/logs/internal/log_file.h"
#include "robot/logs/internal/logged_pose.h"
#include "robot/logs/internal/recording.h"

namespace QV::robot {
namespace {

constexpr int kMostBeams = 10'000;
constexpr double kGreatest = 1e6;
constexpr double kMostTurn = 1e6;
constexpr double kLatest = 4e9;
constexpr std::size_t kOdometryWords = 10;
// FLASER, the count, two poses, two times and a host.
constexpr std::size_t kScanWordsBesideRanges = 11;
constexpr std::string_view kOtherMessages[] = {"PARAM", "SYNC", "MARKER", "RLASER", "TRUEPOS"};

LoggedPose readPose(const LogLine& line, std::size_t index) {
  return {line.toNumber(index, "x", -kGreatest, kGreatest),
          line.toNumber(index + 1, "y", -kGreatest, kGreatest),
          line.toNumber(index + 2, "theta", -kMostTurn, kMostTurn)};
}

Model::SensorConfig describeLaser(int beams, const LoggedPose& place) {
  Model::SensorConfig laser;
  laser.name = "Laser";
  laser.parentLink = "body";
  laser.type = 8;
  laser.origin = Math::transformFromPose2D(toPose2D(place));
  laser.properties = {{"minimumDetectionDistance", "0"},
                      {"maximumDetectionDistance", "80"},
                      {"horizontalAngularRange", "3.1415927"},
                      {"regIndex", "1"},
                      {"setOperationMode", "Laser/OperationMode/Actuator"},
                      {"getOperationMode", "Laser/OperationMode"},
                      {"timestamp", "Laser/Timestamp"}};
  for (int beam = 0; beam < beams; ++beam) {
    const std::string point = "Laser/Point" + std::to_string(beam);
    laser.memoryKeys.push_back(point + "/X");
    laser.memoryKeys.push_back(point + "/Y");
  }
  return laser;
}

class LidarLogReader {
 public:
  Recording read(LogFile& log) {
    while (const auto line = log.next()) xReadLine(*line);
    if (recording.steps.empty()) throw std::runtime_error(log.getPath() + ": no FLASER line found");
    return std::move(recording);
  }

 private:
  void xReadLine(const LogLine& line) {
    if (line[0] == "FLASER") return xReadScan(line);
    if (line[0] == "ODOM") return xCheckOdometry(line);
    if (std::ranges::find(kOtherMessages, line[0]) != std::end(kOtherMessages)) return;
    line.failAt(0, "FLASER or ODOM");
  }

  void xCheckOdometry(const LogLine& line) const {
    line.expectSize(kOdometryWords);
    readPose(line, 1);
    for (const std::size_t index : {4, 5, 6}) {
      line.toNumber(index, "a velocity or acceleration", -kGreatest, kGreatest);
    }
    line.toNumber(7, "a time in seconds", 0.0, kLatest);
  }

  void xReadScan(const LogLine& line) {
    if (line.getSize() < 2) line.fail("a number of ranges expected");
    const int beams = line.toInteger(1, "a number of ranges", 2, kMostBeams);
    const auto rest = static_cast<std::size_t>(beams) + 2;
    line.expectSize(static_cast<std::size_t>(beams) + kScanWordsBesideRanges);
    const LoggedPose robot = readPose(line, rest + 3);
    xCheckLaser(line, beams, laserOnRobot(readPose(line, rest), robot));
    recording.steps.push_back({xReadTime(line, rest + 6), toPose2D(robot), xPoints(line, beams)});
  }

  // The first scan gives the laser's field of view and mounting.
  void xCheckLaser(const LogLine& line, int beams, const LoggedPose& place) {
    if (!firstPlace) {
      firstPlace = place;
      firstLine = line.getNumber();
      firstBeams = beams;
      recording.sensors = {describeLaser(beams, place)};
    }
    const std::string before = " expected as in line " + std::to_string(firstLine);
    if (beams != firstBeams) line.fail(std::to_string(firstBeams) + " ranges" + before);
    if (!isSamePlace(place, *firstPlace))
      line.fail("a laser at the same place on the robot" + before);
  }

  ko::Duration xReadTime(const LogLine& line, std::size_t index) {
    const double seconds = line.toNumber(index, "a time in seconds", 0.0, kLatest);
    const ko::Duration time = boost::chrono::microseconds(std::llround(seconds * 1e6));
    if (!firstTime) firstTime = time;
    const ko::Duration since = time - *firstTime;
    if (!recording.steps.empty() && since < recording.steps.back().time) {
      line.failAt(index, "a time not before that of the scan before");
    }
    return since;
  }

  // Half a turn has both its edges, or all but the last.
  std::vector<float> xPoints(const LogLine& line, int beams) const {
    std::vector<float> values;
    values.reserve(2 * static_cast<std::size_t>(beams));
    const double step = std::numbers::pi / (beams % 2 == 1 ? beams - 1 : beams);
    for (int beam = 0; beam < beams; ++beam) {
      const auto index = static_cast<std::size_t>(beam) + 2;
      const double range = line.toNumber(index, "a range in metres", 0.0, kGreatest);
      const double angle = -std::numbers::pi / 2.0 + step * beam;
      values.push_back(static_cast<float>(range * std::cos(angle)));
      values.push_back(static_cast<float>(range * std::sin(angle)));
    }
    return values;
  }

  Recording recording;
  std::optional<LoggedPose> firstPlace;
  int firstLine = 0;
  int firstBeams = 0;
  std::optional<ko::Duration> firstTime;
};

}  // namespace

Recording readLidarLog(LogFile& log) {
  return LidarLogReader().read(log);
}

Recording readLidarLog(const std::string& path) {
  LogFile log(path);
  return readLidarLog(log);
}

}  // namespace QV::robot
