#pragma once

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <CLI/App.hpp>

#include "outlets/outlet.h"
#include "session/session.h"

namespace QV::ros2 {
class SessionRecorder;
}

namespace QV::app {

/** The status of a program whose session is not all in its file. */
constexpr int kIncomplete = 2;

/**
 * The file that a session is written to: a recording, a picture, or records as text. "-" is
 * standard output.
 */
class OutputFiles {
 public:
  OutputFiles() = default;
  /** `path`, where the option says nothing. */
  explicit OutputFiles(std::string path) : path(std::move(path)) {}

  /** Adds the option, which `help` says more about. */
  CLI::Option* addOption(CLI::App& command, const std::string& names, const std::string& help);

  /** Checks before anything is opened: UsageError if the file is `read`, which would be lost, or
   * in it. */
  void checkIsNot(const std::string& read) const;

  /** Checks before anything is opened: UsageError unless it is a PNG that can be written, or
   * nothing. */
  void checkIsPicture() const;

  /** Opens what was asked for, if anything. `wantsAll`: a recording subscribes to all sensors. */
  void open(session::Session& session, outlets::OutletList& list, bool wantsAll);

  bool isOpen() const { return opened; }
  bool isRecording() const { return recorder != nullptr; }
  bool isAsked() const { return !path.empty(); }
  /** The stream for the summary: elsewhere than the file. */
  std::ostream& getSummaryStream() const;
  /** Says that it was written; false if a recording was not. */
  bool report(std::ostream& out) const;

 private:
  std::string path;
  bool opened = false;
  std::shared_ptr<ros2::SessionRecorder> recorder;
};

}  // namespace QV::app
