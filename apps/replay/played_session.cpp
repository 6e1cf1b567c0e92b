#include "apps/replay/played_session.h"

#include <string>

#include "apps/output/notes.h"
#include "apps/subscriber.h"
#include "platform/ko/log.h"
#include "session/internal/seconds.h"
#include "session/open.h"
#include "session/usage_error.h"

namespace QV::app {

PlayedSession::PlayedSession(const std::string& path, const std::optional<std::string>& poses,
                             const sensor::SensorFactory& sensors) {
  if (ros2::isRecording(path)) {
    recording = std::make_unique<ros2::SessionReplay>(path, sensors);
  } else {
    log = session::openRecording(path, poses);
  }
}

session::Session& PlayedSession::getSession() const {
  return recording ? recording->getSession() : *log;
}

session::Snapshot PlayedSession::look() const {
  return recording ? recording->look() : log->look();
}

bool PlayedSession::begin() {
  if (recording) {
    recording->begin();
    return step();
  }
  log->subscribe(kSubscriber, log->getManager().getFamilyNames());
  return true;
}

bool PlayedSession::step() {
  hasEnded = !getSession().step();
  if (!hasEnded) ++steps;
  return !hasEnded;
}

double PlayedSession::getSeconds() const {
  return session::inSeconds(recording ? recording->getTime() : ko::Clock::now().time_since_epoch());
}

double PlayedSession::getShareDone() const {
  return getSession().getShareDone();
}

std::optional<ros2::RecordDifference> PlayedSession::compare() const {
  if (recording && recording->isOwn()) return recording->compare();
  throw session::UsageError(
      "--compare: a recording made by this program expected, another recording or a log given");
}

std::uint64_t PlayedSession::countMissing() const {
  if (!recording) return 0;
  const std::uint64_t recorded = recording->getLookCount().value_or(0);
  return hasEnded && recorded > steps ? recorded - steps : recording->countLeftOut();
}

bool PlayedSession::isDamaged() const {
  return recording && !recording->getDamage().lines.empty();
}

void PlayedSession::warnOfDamage() const {
  if (!recording) return;
  for (const std::string& line : recording->getDamage().lines)
    complain("warning: " + ko::log::onOneLine(line));
  if (const std::uint64_t missing = countMissing())
    complain("warning: " + std::to_string(missing) +
             " snapshots were skipped: some of their data is unreadable");
}

}  // namespace QV::app
