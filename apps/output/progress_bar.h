#pragma once

#include <string>

namespace QV::app {

/** A bar on standard error that shows how much is done; silent where that is no terminal. */
class ProgressBar {
 public:
  explicit ProgressBar(const std::string& label);
  /** Leaves the cursor on a new line. */
  ~ProgressBar();
  ProgressBar(const ProgressBar&) = delete;
  ProgressBar& operator=(const ProgressBar&) = delete;

  /** `done` from 0 to 1. */
  void show(double done);

  /** A line of its own above the bar. */
  void note(const std::string& line);

 private:
  std::string label;
  bool terminal;
  int shownPercent = -1;
};

}  // namespace QV::app
