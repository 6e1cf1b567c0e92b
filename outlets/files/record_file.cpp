#include "outlets/files/record_file.h"

#include <stdexcept>

#include "outlets/files/record_output.h"

namespace QV::outlets {

RecordFile::RecordFile(const std::string& path, session::Frame frame) : path(path), frame(frame) {
  if (path.empty()) return;
  file.open(path);
  xCheck();
}

void RecordFile::write(const std::vector<Math::MetricalData>& records, const Math::Pose2D& robot) {
  if (path.empty()) return;
  for (const auto& record : records) {
    auto line = toJson(record, frame);
    if (frame == session::Frame::robot) {
      line["robotPose"] = {
          {"x", toJson(robot.x)}, {"y", toJson(robot.y)}, {"theta", toJson(robot.theta)}};
    }
    file << line << '\n';
  }
  xCheck();
}

void RecordFile::close() {
  if (path.empty()) return;
  file.close();
  xCheck();
}

void RecordFile::xCheck() const {
  if (!file) throw std::runtime_error(path + ": can't be written");
}

}  // namespace QV::outlets
