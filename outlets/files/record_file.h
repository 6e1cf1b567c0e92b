#pragma once

#include <fstream>
#include <string>
#include <vector>

#include "platform/math/metrical_data.h"
#include "platform/math/pose2d.h"
#include "session/frame.h"

namespace QV::outlets {

/**
 * The file that records go to, if one was asked for: an object of JSON for each, in whole lines
 * also when the run is interrupted. One in the robot's frame comes with "robotPose", x, y, theta.
 */
class RecordFile {
 public:
  /** No file if `path` is empty; one that can't be written: std::runtime_error, here and later. */
  RecordFile(const std::string& path, session::Frame frame);

  /** `robot` is where the robot was when they were read. */
  void write(const std::vector<Math::MetricalData>& records, const Math::Pose2D& robot);
  void close();

 private:
  void xCheck() const;

  const std::string path;
  const session::Frame frame;
  std::ofstream file;
};

}  // namespace QV::outlets
