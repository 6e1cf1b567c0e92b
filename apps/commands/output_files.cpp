#include "apps/commands/output_files.h"

#include <algorithm>
#include <iostream>
#include <iterator>

#include <CLI/CLI.hpp>

#include "apps/commands/add_options.h"
#include "outlets/files/record_file.h"
#include "outlets/picture/session_picture.h"
#include "ros2/bag/bag_reader.h"
#include "ros2/recording/session_recorder.h"
#include "session/usage_error.h"

namespace QV::app {
namespace {

constexpr char kStandardOutput[] = "-";

std::shared_ptr<outlets::Outlet> makeRecorder(const std::string& path, session::Session& session,
                                              bool wantsAll) {
  ros2::RecorderOptions options;
  options.wantsAll = wantsAll;
  return std::make_shared<ros2::SessionRecorder>(path, session, options);
}

std::shared_ptr<outlets::Outlet> makePicture(const std::string& path, session::Session&, bool) {
  return std::make_shared<outlets::SessionPicture>(path);
}

std::shared_ptr<outlets::Outlet> makeRecordFile(const std::string& path, session::Session&, bool) {
  return std::make_shared<outlets::RecordFile>(path);
}

struct Format {
  /** The ending of a file's name. */
  const char* ending;
  std::shared_ptr<outlets::Outlet> (*make)(const std::string& path, session::Session& session,
                                           bool wantsAll);
};

// A new kind of file is a row; the last is for all other names.
constexpr Format kFormats[] = {
    {".mcap", makeRecorder}, {".png", makePicture}, {"", makeRecordFile}};

const Format& formatOf(const std::string& path) {
  return *std::find_if(std::begin(kFormats), std::end(kFormats),
                       [&path](const Format& format) { return path.ends_with(format.ending); });
}

}  // namespace

CLI::Option* OutputFiles::addOption(CLI::App& command, const std::string& names,
                                    const std::string& help) {
  return command.add_option(names, path, help)->type_name("FILE")->check(namesAFile);
}

void OutputFiles::checkIsNot(const std::string& read) const {
  if (ros2::isFileOf(path, read))
    throw session::UsageError(path + ": is being played; choose another output file");
}

void OutputFiles::checkIsPicture() const {
  if (isAsked()) outlets::checkPicturePath(path);
}

void OutputFiles::open(session::Session& session, outlets::OutletList& list, bool wantsAll) {
  opened = true;
  if (path.empty()) return;
  const auto outlet = formatOf(path).make(path, session, wantsAll);
  recorder = std::dynamic_pointer_cast<ros2::SessionRecorder>(outlet);
  list.add(outlet);
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
