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
  /** `path` is the default of the option. */
  explicit OutputFiles(std::string path) : path(std::move(path)) {}

  /** Adds the option with a help text. */
  CLI::Option* addOption(CLI::App& command, const std::string& names, const std::string& help);

  /** Throws UsageError if the file is `read` or in it, because writing would destroy it. Call it
   * before open(). */
  void checkIsNot(const std::string& read) const;

  /** Throws UsageError unless the file is a writable PNG or not set. Call it before open(). */
  void checkIsPicture() const;

  /** Opens the file, if one was set. `wantsAll`: a recording subscribes to all sensors. */
  void open(session::Session& session, outlets::OutletList& list, bool wantsAll);

  bool isOpen() const { return opened; }
  bool isRecording() const { return recorder != nullptr; }
  bool isAsked() const { return !path.empty(); }
  /** The stream for the summary: elsewhere than the file. */
  std::ostream& getSummaryStream() const;
  /** Prints that the file was written; returns false if a recording is incomplete. */
  bool report(std::ostream& out) const;

 private:
  std::string path;
  bool opened = false;
  std::shared_ptr<ros2::SessionRecorder> recorder;
};

}  // namespace QV::app
