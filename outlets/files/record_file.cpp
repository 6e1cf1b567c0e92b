#include "outlets/files/record_file.h"

#include <stdexcept>

#include "outlets/files/internal/record_text.h"

namespace QV::outlets {

RecordFile::RecordFile(const std::string& path)
    : path(path), isCsv(path.ends_with(".csv")), file(path) {
  if (isCsv) writeCsvTitles(file);
  xCheck();
}

void RecordFile::show(const session::Snapshot& snapshot) {
  for (const auto& record : session::recordsOf(snapshot)) xWrite(record, snapshot);
  xCheck();
}

void RecordFile::xWrite(const Math::MetricalData& record, const session::Snapshot& snapshot) {
  if (isCsv) return writeCsv(file, record, snapshot.frame);
  auto line = toJson(record, snapshot.frame);
  if (snapshot.frame == session::Frame::robot) {
    line["robotPose"] = exactPoseOf(snapshot.pose);
  }
  file << toText(line) << '\n';
}

void RecordFile::finish() {
  file.close();
  xCheck();
}

void RecordFile::xCheck() const {
  if (!file) throw std::runtime_error(path + ": can't be written");
}

}  // namespace QV::outlets
