#pragma once

#include <fstream>
#include <string>

#include "outlets/outlet.h"

namespace QV::outlets {

/**
 * A file of records. A name ending in .csv gives one line per point, any other name one JSON object
 * per record. Records in the robot's ground frame also have "robotPose" with x, y, theta (m, rad).
 * An interrupted session leaves complete lines.
 */
class QV_API RecordFile : public Outlet {
 public:
  /**
   * Opens the file; "-" is standard output. Throws std::runtime_error if it can't be written, here
   * and later.
   */
  explicit RecordFile(const std::string& path);

  void show(const session::Snapshot& snapshot) override;
  void finish() override;

 private:
  void xWrite(const Math::MetricalData& record, const session::Snapshot& snapshot);
  void xCheck() const;

  const std::string path;
  const bool isCsv;
  std::ofstream file;
  std::ostream& out;
};

}  // namespace QV::outlets
