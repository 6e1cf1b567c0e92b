#include "ros2/recording/run_replay.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

#include "ros2/recording/internal/compare_records.h"
#include "ros2/recording/internal/played_robot.h"
#include "ros2/recording/internal/told_robot.h"
#include "session/internal/make_session.h"
#include "session/internal/number_text.h"
#include "session/internal/seconds.h"
#include "session/internal/session_parts.h"

namespace QV::ros2 {
namespace {

bool isRunRecording(const std::string& path) {
  const BagReader bag(path);
  return std::ranges::any_of(bag.getMetadata(), [](const auto& metadata) {
    return metadata.name == RecordingFacts::kName;
  });
}

std::unique_ptr<session::Session> openOwn(const std::string& path) {
  auto reader = std::make_unique<RunReader>(path);
  auto time = std::make_unique<ko::SimulatedTime>(reader->getFacts().start);
  auto robot = makePlayedRobot(std::move(reader));
  return session::makeSession(std::move(time), std::move(robot));
}

std::unique_ptr<session::Session> openOther(const std::string& path) {
  auto time = std::make_unique<ko::SimulatedTime>();
  auto robot = std::make_unique<ToldRobot>(path);
  auto session = session::makeSession(std::move(time), std::move(robot));
  session->subscribe("recording", session->getManager().getFamilyNames());
  return session;
}

std::unique_ptr<session::Session> open(const std::string& path, bool isOwn) {
  try {
    return isOwn ? openOwn(path) : openOther(path);
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

RunReplay::RunReplay(const std::string& path)
    : isOwnRun(isRunRecording(path)), session(open(path, isOwnRun)) {}

RunReplay::~RunReplay() = default;

BagRobot& RunReplay::xGetRobot() const {
  return static_cast<BagRobot&>(robotOf(*session));
}

session::Snapshot RunReplay::look() const {
  session::Snapshot snapshot = session->look();
  for (session::SensorState& sensor : snapshot.sensors) {
    if (!xGetRobot().isNew(sensor.name)) sensor.records.clear();
  }
  return snapshot;
}

std::optional<RecordDifference> RunReplay::compare() const {
  const auto* recorded = xGetRobot().getRecorded();
  if (!recorded) return std::nullopt;
  return findDifference(*recorded, session::recordsOf(session->look()), ko::Clock::now());
}

ko::Duration RunReplay::getTime() const {
  return ko::Clock::now() - xGetRobot().getStart();
}

ko::Duration RunReplay::getLength() const {
  const BagTimes times = xGetRobot().getBag().getTimes();
  return ko::Duration(static_cast<std::int64_t>(times.end - times.start));
}

const BagDamage& RunReplay::getDamage() const {
  return xGetRobot().getBag().getDamage();
}

}  // namespace QV::ros2
