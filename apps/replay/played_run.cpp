#include "apps/replay/played_run.h"

#include <filesystem>
#include <iostream>

#include "platform/ko/log.h"
#include "session/internal/seconds.h"
#include "session/open.h"
#include "session/usage_error.h"

namespace QV::app {
namespace {

bool isBag(const std::string& path) {
  return path.ends_with(".mcap") || path.ends_with(".db3") || std::filesystem::is_directory(path);
}

}  // namespace

PlayedRun::PlayedRun(const std::string& path, const std::optional<std::string>& poses) {
  if (isBag(path)) {
    recording = std::make_unique<ros2::RunReplay>(path);
  } else {
    log = session::openRecording(path, poses);
  }
}

session::Session& PlayedRun::getSession() const {
  return recording ? recording->getSession() : *log;
}

session::Snapshot PlayedRun::look() const {
  return recording ? recording->look() : log->look();
}

bool PlayedRun::begin() {
  if (recording) {
    recording->begin();
    return step();
  }
  log->subscribe("qvsensors", log->getManager().getFamilyNames());
  return true;
}

bool PlayedRun::step() {
  return getSession().step();
}

double PlayedRun::getSeconds() const {
  return session::inSeconds(recording ? recording->getTime() : ko::Clock::now().time_since_epoch());
}

double PlayedRun::getShareDone() const {
  return getSession().getShareDone();
}

std::optional<ros2::RecordDifference> PlayedRun::compare() const {
  if (recording && recording->isOwn()) return recording->compare();
  throw session::UsageError(
      "--compare: a recording of this program's expected, which has records; another one given");
}

void PlayedRun::warnOfDamage() const {
  if (!recording) return;
  for (const std::string& line : recording->getDamage().lines)
    std::cerr << "qvsensors: warning: " << ko::log::onOneLine(line) << '\n';
}

}  // namespace QV::app
