#include "apps/commands/output_files.h"

#include <iostream>

#include <CLI/CLI.hpp>

#include "apps/commands/common_options.h"
#include "outlets/files/record_file.h"
#include "ros2/bag/bag_reader.h"
#include "ros2/recording/run_recorder.h"
#include "session/usage_error.h"

namespace QV::app {
namespace {

constexpr char kStandardOutput[] = "-";

}  // namespace

bool isRecordingName(const std::string& path) {
  return path.ends_with(".mcap");
}

CLI::Option* OutputFiles::addOption(CLI::App& command, const std::string& names,
                                    const std::string& help) {
  return command.add_option(names, path, help)->check(namesAFile);
}

void OutputFiles::checkIsNot(const std::string& read) const {
  if (ros2::isFileOf(path, read))
    throw session::UsageError(path + ": another file than what is played expected");
}

void OutputFiles::open(session::Session& session, outlets::OutletList& list, bool wantsAll) {
  opened = true;
  if (path.empty()) return;
  if (!isRecordingName(path)) return list.add(std::make_shared<outlets::RecordFile>(path));
  ros2::RecorderOptions options;
  options.wantsAll = wantsAll;
  recorder = std::make_shared<ros2::RunRecorder>(path, session, options);
  list.add(recorder);
}

std::ostream& OutputFiles::getSummaryStream() const {
  return path == kStandardOutput ? std::cerr : std::cout;
}

bool OutputFiles::report(std::ostream& out) const {
  if (recorder && recorder->hasFailed()) return false;
  if (!path.empty() && path != kStandardOutput) out << "Wrote " << path << '\n';
  return true;
}

}  // namespace QV::app
