#include "apps/replay/played_run.h"

#include <iostream>

#include "platform/ko/log.h"
#include "session/internal/seconds.h"
#include "session/open.h"
#include "session/usage_error.h"

namespace QV::app {

PlayedRun::PlayedRun(const std::string& path, const std::optional<std::string>& poses,
                     const sensor::SensorFactory& sensors) {
  if (ros2::isRecording(path)) {
    recording = std::make_unique<ros2::RunReplay>(path, sensors);
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
  hasEnded = !getSession().step();
  if (!hasEnded) ++steps;
  return !hasEnded;
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

std::uint64_t PlayedRun::countMissing() const {
  const std::uint64_t recorded = recording ? recording->getLookCount().value_or(0) : 0;
  return hasEnded && recorded > steps ? recorded - steps : 0;
}

bool PlayedRun::isDamaged() const {
  return recording && !recording->getDamage().lines.empty();
}

void PlayedRun::warnOfDamage() const {
  if (!recording) return;
  for (const std::string& line : recording->getDamage().lines)
    std::cerr << "qvsensors: warning: " << ko::log::onOneLine(line) << '\n';
}

}  // namespace QV::app
