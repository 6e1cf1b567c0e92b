#include <cmath>
#include <numbers>
#include <stdexcept>

#include "robot/logs/internal/log_file.h"
#include "robot/logs/internal/recording.h"

namespace QV::robot {
namespace {

constexpr float kDegrees[] = {-90.0f, -37.5f, -22.5f, -7.5f, 7.5f, 22.5f, 37.5f, 90.0f};
constexpr std::size_t kSonars = std::size(kDegrees);
constexpr int kMost = 2'000'000'000;

std::vector<Model::SensorConfig> describeSonars() {
  std::vector<Model::SensorConfig> sonars;
  for (std::size_t i = 0; i < kSonars; ++i) {
    Model::SensorConfig sonar;
    sonar.name = "Sonar" + std::to_string(i);
    sonar.parentLink = "body";
    sonar.type = 9;
    const float angle = kDegrees[i] * std::numbers::pi_v<float> / 180.0f;
    sonar.origin = Math::transformFromPose2D({0.0f, 0.0f, angle});
    sonar.properties = {{"minimumDetectionDistance", "0.17"},
                        {"maximumDetectionDistance", "5"},
                        {"horizontalAngularRange", "0.34906585"}};
    sonar.memoryKeys = {sonar.name + "/Range"};
    sonars.push_back(sonar);
  }
  return sonars;
}

float inMetres(int millimetres) {
  return static_cast<float>(millimetres) / 1000.0f;
}

float inRadians(int tenthsOfDegrees) {
  const double turns = tenthsOfDegrees / 3600.0;
  return static_cast<float>((turns - std::round(turns)) * 2.0 * std::numbers::pi);
}

int readTime(const LogLine& line) {
  return line.toInteger(0, "a time in milliseconds", 0, kMost);
}

std::vector<float> readRanges(const LogLine& line) {
  line.expectSize(1 + kSonars);
  std::vector<float> ranges;
  for (std::size_t i = 1; i <= kSonars; ++i) {
    ranges.push_back(inMetres(line.toInteger(i, "a range in millimetres", 0, kMost)));
  }
  return ranges;
}

Math::Pose2D readPose(const LogLine& line) {
  line.expectSize(4);
  return {inMetres(line.toInteger(1, "x in millimetres", -kMost, kMost)),
          inMetres(line.toInteger(2, "y in millimetres", -kMost, kMost)),
          inRadians(line.toInteger(3, "a heading in tenths of a degree", -kMost, kMost))};
}

[[noreturn]] void failShort(const LogFile& file, const LogFile& other) {
  throw std::runtime_error(file.getPath() + ": as many lines as in " + other.getPath() +
                           " expected, the file ends before");
}

// The pose of the same time as a line of measurements.
Math::Pose2D readPoseAt(LogFile& poses, const LogFile& measurements, const LogLine& measurement) {
  const auto line = poses.next();
  if (!line) failShort(poses, measurements);
  const Math::Pose2D pose = readPose(*line);
  if (readTime(*line) != readTime(measurement)) {
    line->failAt(0, "the time " + std::string(measurement[0]) + " of " + measurements.getPath());
  }
  return pose;
}

}  // namespace

Recording readSonarLog(LogFile& measurements, LogFile& poses) {
  Recording recording{describeSonars(), {}};
  int firstTime = -1;
  while (const auto line = measurements.next()) {
    std::vector<float> ranges = readRanges(*line);
    if (firstTime < 0) firstTime = readTime(*line);
    const ko::Duration time = boost::chrono::milliseconds(readTime(*line) - firstTime);
    if (time < (recording.steps.empty() ? ko::Duration(0) : recording.steps.back().time)) {
      line->failAt(0, "a time not before that of the line before");
    }
    const Math::Pose2D pose = readPoseAt(poses, measurements, *line);
    recording.steps.push_back({time, pose, std::move(ranges)});
  }
  if (poses.next()) failShort(measurements, poses);
  if (recording.steps.empty()) throw std::runtime_error(measurements.getPath() + ": no line found");
  return recording;
}

Recording readSonarLog(const std::string& measurementsPath, const std::string& posesPath) {
  LogFile measurements(measurementsPath);
  LogFile poses(posesPath);
  return readSonarLog(measurements, poses);
}

}  // namespace QV::robot
