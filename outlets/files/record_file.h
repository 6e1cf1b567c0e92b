#pragma once

#include <fstream>
#include <string>

#include "outlets/outlet.h"

namespace QV::outlets {

/**
 * A file of records, in whole lines also when the session is interrupted. One that ends in .csv has
 * a line for each point; any other an object of JSON for each record, and where this is in the
 * robot's frame, "robotPose" with x, y, theta.
 */
class QV_API RecordFile : public Outlet {
 public:
  /** Opens the file; "-" is standard output. One that can't be written: std::runtime_error, here
   * and later. */
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
