#pragma once

#include <string>
#include <vector>

#include "platform/math/metrical_data.h"
#include "platform/navigation/occupancy_map.h"
#include "session/frame.h"

namespace QV::outlets {

/** What a picture of a robot and its sensors shows over the map. */
struct RunPicture {
  const OccupancyMap& map;
  /** The robot's way, map frame; its last pose is where the records were read. One pose or more. */
  std::vector<Math::Pose2D> poses;
  std::vector<Math::MetricalData> records;
  std::string title;
  /** Simulated fans look along the heading, whatever a sensor's mounting; others where they do. */
  session::Frame frame = session::Frame::map;
};

/** UsageError unless `path` names a PNG in a folder that can be written to. */
void checkPicturePath(const std::string& path);

/** Writes a PNG; std::runtime_error, with the path, when that fails. */
void writePicture(const RunPicture& picture, const std::string& path);

}  // namespace QV::outlets
