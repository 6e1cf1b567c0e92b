#pragma once

#include <string>
#include <vector>

#include "platform/api.h"
#include "platform/ko/clock.h"
#include "platform/math/pose2d.h"
#include "platform/model/sensor_config.h"

namespace QV::robot {

class LogFile;

/** The measurements of a recorded robot at one time, and its pose. */
struct RecordedStep {
  /** The time since the first step; never decreases. */
  ko::Duration time;
  /** The robot in a frame of the recording's own. */
  Math::Pose2D pose;
  /** The values, one for each memory key of the sensors, in their order. */
  std::vector<float> values;
};

/** A drive of a robot: its sensors, all fixed to its body, and what they measured. */
struct QV_API Recording {
  std::vector<Model::SensorConfig> sensors;
  std::vector<RecordedStep> steps;

  /**
   * The robot that drove, of kind 1, as ModelUtils::robotFromXml reads it. Of a sensor's origin it
   * takes x, y and the heading; names and properties must need no escapes in XML.
   */
  std::string toDescription() const;
};

/**
 * Reads a CARMEN log: each FLASER line is a step of one sensor, "Laser" (type 8), the beams of half
 * a turn from right to left; its keys are the points of the beams, no return at 80 m or more. The
 * laser's place on the robot is what the line says of laser and odometry, the same in all lines.
 * Other messages of such logs are skipped, but ODOM lines are checked. A file that can't be read or
 * is malformed throws std::runtime_error that names the file, the line and what was expected.
 */
QV_API Recording readLidarLog(const std::string& path);

/**
 * Reads a log of 8 sonars ("Sonar0" to "Sonar7", type 9, from -90 to 90 degrees at the robot's
 * centre) from two files of the same times: lines of a time in milliseconds and 8 ranges in
 * millimetres, no echo at 5 m or more; and lines of a time, x and y in millimetres and the heading
 * in tenths of a degree. Errors as above.
 */
QV_API Recording readSonarLog(const std::string& measurementsPath, const std::string& posesPath);

/** Read logs from their beginning. */
QV_API Recording readLidarLog(LogFile& log);
QV_API Recording readSonarLog(LogFile& measurements, LogFile& poses);

}  // namespace QV::robot
