#include "apps/replay/played_session.h"

#include <array>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <string_view>

#include "platform/ko/log.h"
#include "session/internal/seconds.h"
#include "session/open.h"
#include "session/usage_error.h"

namespace QV::app {
namespace {

// By what stands in it; a name says what a damaged one should be.
bool isBag(const std::string& path) {
  std::array<char, 16> begin{};
  std::ifstream(path, std::ios::binary).read(begin.data(), begin.size());
  const std::string_view text(begin.data(), begin.size());
  return text.starts_with("\x89MCAP") || text.starts_with("SQLite format 3") ||
         path.ends_with(".mcap") || path.ends_with(".db3") || std::filesystem::is_directory(path);
}

}  // namespace

PlayedSession::PlayedSession(const std::string& path, const std::optional<std::string>& poses,
                             const sensor::SensorFactory& sensors) {
  if (isBag(path)) {
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
  log->subscribe("qvsensors", log->getManager().getFamilyNames());
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
      "--compare: a recording of this program's expected, which has records; another one given");
}

std::uint64_t PlayedSession::countMissing() const {
  const std::uint64_t recorded = recording ? recording->getLookCount().value_or(0) : 0;
  return hasEnded && recorded > steps ? recorded - steps : 0;
}

bool PlayedSession::isDamaged() const {
  return recording && !recording->getDamage().lines.empty();
}

void PlayedSession::warnOfDamage() const {
  if (!recording) return;
  for (const std::string& line : recording->getDamage().lines)
    std::cerr << "qvsensors: warning: " << ko::log::onOneLine(line) << '\n';
}

}  // namespace QV::app
