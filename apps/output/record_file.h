#pragma once

#include <fstream>
#include <string>
#include <vector>

#include "apps/output/frame.h"
#include "platform/math/metrical_data.h"

namespace QV::app {

/** The file that records go to, if one was asked for: an object of JSON for each, in whole lines
 * also when the run is interrupted. */
class RecordFile {
 public:
  /** No file if `path` is empty; one that can't be written: std::runtime_error, here and later. */
  RecordFile(const std::string& path, Frame frame);

  void write(const std::vector<Math::MetricalData>& records);
  void close();

 private:
  void xCheck() const;

  const std::string path;
  const Frame frame;
  std::ofstream file;
};

}  // namespace QV::app
