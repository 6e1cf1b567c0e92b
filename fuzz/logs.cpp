/**
 * Logs of a lidar and of sonars, sound ones with other words in them: what is read can be played,
 * what is refused names its file.
 */
#include <array>
#include <cmath>
#include <stdexcept>

#include <boost/make_shared.hpp>

#include "fuzz/damaged_text.h"
#include "fuzz/quiet_run.h"
#include "fuzz/value_decoder.h"
#include "platform/model/model_utils.h"
#include "robot/logs/internal/log_file.h"
#include "robot/logs/internal/log_replay.h"
#include "robot/services/internal/memory_service.h"
#include "robot/services/internal/motion_service.h"

namespace QV::fuzz {
namespace {

using Bytes = std::span<const std::uint8_t>;
using robot::LogFile;
using robot::Recording;

constexpr std::string_view kLidar =
    "# c\nPARAM a b\nODOM 1 2 1.5 0.1 -0.2 0 100.4 h 0\n"
    "FLASER 3 1.0 2.0 81.83 1 3 1.570796 1 2 1.570796 100.5 h 0\n"
    "FLASER 3 0 1e-1 5 1 3 7.853982 1 2 1.570796 100.750001 h 0.25\n"
    "FLASER 3 1 1 1 2 3 1.570796 2 2 1.570796 101 h 0";
constexpr std::string_view kSonar = "1000 5110 2 3 4 5 6 7 400\n1215 10 20 30 40 50 60 70 80\n";
constexpr std::string_view kPoses = "1000 0 0 900\n1215 -1500 250 3599\n";
constexpr std::array<std::string_view, 24> kOthers = {
    "",        "0",    "-0",    "1",      "2",          "-1",        "nan", "inf",
    "1e6",     "-1e6", "4e9",   "1e-300", "1e308",      "1e-46",     "0x1", "2000000000",
    "-900000", "3.0",  "10000", "FLASER", "4000000000", "100.50001", "\n",  "#"};

void checkSteps(const Recording& recording) {
  std::size_t keys = 0;
  for (const Model::SensorConfig& sensor : recording.sensors) keys += sensor.memoryKeys.size();
  ko::Duration before{0};
  check(!recording.steps.empty() && recording.steps[0].time == before, "no first step");
  for (const robot::RecordedStep& step : recording.steps) {
    check(step.time >= before, "a step before the one before");
    before = step.time;
    check(std::isfinite(step.pose.x + step.pose.y + step.pose.theta), "the robot is nowhere");
    check(step.values.size() == keys, "a key without a value");
    for (const float value : step.values) check(std::isfinite(value), "a value that is no number");
  }
}

void play(const Recording& recording) {
  const Model::Robot robot = Model::ModelUtils::robotFromXml(recording.toDescription());
  check(robot.sensorConfigs.size() == recording.sensors.size(), "another number of sensors");
  const auto broker = QVBroker::create();
  broker->registerModule(boost::make_shared<robot::MemoryService>(broker));
  const auto motion = boost::make_shared<robot::MotionService>(robot);
  robot::LogReplay replay(recording, broker, motion);
  while (replay.next()) {
    const Math::Pose2D velocity = motion->getRobotVelocity();
    check(std::isfinite(velocity.x + velocity.y + velocity.theta), "a speed that is no number");
  }
}

Recording readSonar(std::string measurements, std::string poses) {
  LogFile log("log", std::move(measurements));
  LogFile places("log", std::move(poses));
  return robot::readSonarLog(log, places);
}

Recording readAny(std::uint8_t choice, Bytes bytes) {
  static const SoundText lidar(kLidar, kOthers);
  static const SoundText sonar(kSonar, kOthers);
  static const SoundText poses(kPoses, kOthers);
  if (choice % 4 == 2) return readSonar(sonar.changed(bytes), std::string(kPoses));
  if (choice % 4 == 3) return readSonar(std::string(kSonar), poses.changed(bytes));
  LogFile log("log",
              choice % 4 == 0 ? std::string(bytes.begin(), bytes.end()) : lidar.changed(bytes));
  return robot::readLidarLog(log);
}

void read(const std::uint8_t* data, std::size_t size) {
  if (size == 0) return;
  try {
    const Recording recording = readAny(data[0], {data + 1, size - 1});
    checkSteps(recording);
    // To play takes longer than to read.
    if (isOneOf(64, data, size)) play(recording);
  } catch (const std::runtime_error& error) {
    check(std::string_view(error.what()).starts_with("log: "), "no file is named");
  }
}

}  // namespace
}  // namespace QV::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  return QV::fuzz::runQuietly(QV::fuzz::read, data, size);
}
