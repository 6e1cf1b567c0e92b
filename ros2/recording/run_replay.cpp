#include "ros2/recording/run_replay.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

#include "ros2/recording/internal/compare_records.h"
#include "ros2/recording/internal/conversions.h"
#include "ros2/recording/internal/played_robot.h"
#include "session/internal/make_session.h"
#include "session/internal/number_text.h"
#include "session/internal/seconds.h"
#include "session/internal/session_parts.h"

namespace QV::ros2 {
namespace {

std::unique_ptr<session::Session> open(const std::string& path) {
  try {
    auto reader = std::make_unique<RunReader>(path);
    auto time = std::make_unique<ko::SimulatedTime>(reader->getFacts().start);
    auto robot = makePlayedRobot(std::move(reader));
    return session::makeSession(std::move(time), std::move(robot));
  } catch (const std::exception& error) {
    const std::string what = error.what();
    throw std::runtime_error(what.starts_with(path) ? what : path + ": " + what);
  }
}

}  // namespace

std::string RecordDifference::toText() const {
  return sensor + " at " + session::fixed(session::inSeconds(time.time_since_epoch()), 3) +
         " s: " + field + " is " + played + ", was " + recorded;
}

RunReplay::RunReplay(const std::string& path) : session(open(path)) {}

RunReplay::~RunReplay() = default;

PlayedRobot& RunReplay::xGetRobot() const {
  return static_cast<PlayedRobot&>(robotOf(*session));
}

std::optional<RecordDifference> RunReplay::compare() const {
  PlayedRobot& robot = xGetRobot();
  const auto* recorded = robot.getRecorded();
  if (!recorded) return std::nullopt;
  return findDifference(*recorded, session::recordsOf(session->look()), ko::Clock::now());
}

ko::Duration RunReplay::getTime() const {
  const BagTimes times = xGetRobot().getTimes();
  return ko::Clock::now() - timeOf(times.start);
}

ko::Duration RunReplay::getLength() const {
  const BagTimes times = xGetRobot().getTimes();
  return ko::Duration(static_cast<std::int64_t>(times.end - times.start));
}

const BagDamage& RunReplay::getDamage() const {
  return xGetRobot().getDamage();
}

bool isRunRecording(const std::string& path) {
  const BagReader bag(path);
  return std::ranges::any_of(bag.getMetadata(), [](const auto& metadata) {
    return metadata.name == RecordingFacts::kName;
  });
}

}  // namespace QV::ros2
