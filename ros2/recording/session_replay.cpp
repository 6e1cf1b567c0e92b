#include "ros2/recording/session_replay.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <fstream>
#include <functional>
#include <stdexcept>
#include <string_view>
#include <utility>

#include "ros2/recording/internal/compare_records.h"
#include "ros2/recording/internal/played_robot.h"
#include "ros2/recording/internal/told_robot.h"
#include "ros2/recording/internal/topic_names.h"
#include "session/internal/make_session.h"
#include "session/internal/number_text.h"
#include "session/internal/seconds.h"
#include "session/internal/session_parts.h"

namespace QV::ros2 {
namespace {

bool isSessionRecording(const std::string& path) {
  const BagReader bag(path);
  return std::ranges::any_of(bag.getMetadata(), [](const auto& metadata) {
    return metadata.name == RecordingFacts::kName;
  });
}

std::function<session::TimedRobot()> prepareOwn(const std::string& path,
                                                const sensor::SensorFactory& sensors) {
  // The function must be copyable, so its content is shared.
  auto reader =
      std::make_shared<std::unique_ptr<SessionReader>>(std::make_unique<SessionReader>(path));
  return [reader, sensors] {
    auto time = std::make_unique<ko::SimulatedTime>((*reader)->getFacts().start);
    return session::TimedRobot{std::move(time), makePlayedRobot(std::move(*reader), sensors)};
  };
}

std::function<session::TimedRobot()> prepareOther(
    const std::string& path, const std::shared_ptr<const TopicSurvey>& survey) {
  auto bag = std::make_shared<std::unique_ptr<BagReader>>(std::make_unique<BagReader>(path));
  return [path, survey, bag] {
    auto time = std::make_unique<ko::SimulatedTime>();
    return session::TimedRobot{std::move(time),
                               std::make_unique<ToldRobot>(path, std::move(*bag), *survey)};
  };
}

template <typename Call>
auto naming(const std::string& path, Call call) {
  try {
    return call();
  } catch (const std::exception& error) {
    const std::string what = error.what();
    throw std::runtime_error(what.starts_with(path) ? what : path + ": " + what);
  }
}

}  // namespace

std::string RecordDifference::toText() const {
  return sensor + " at " + session::fixed(session::inSeconds(time.time_since_epoch()), 3) +
         " s: " + field + ": recorded " + recorded + ", played " + played;
}

SessionReplay::Preparation::Preparation(const std::string& path,
                                        const sensor::SensorFactory& sensors)
    : isOwnSession(isSessionRecording(path)) {
  // The survey may read the whole file, so it is made once.
  std::shared_ptr<const TopicSurvey> survey;
  if (!isOwnSession)
    survey = naming(path, [&] { return std::make_shared<const TopicSurvey>(surveyTopics(path)); });
  const session::Reopen reopen = [path, survey, sensors] {
    return survey ? prepareOther(path, survey) : prepareOwn(path, sensors);
  };
  const auto make = naming(path, reopen);
  open = [path, reopen, make] {
    session::TimedRobot made = naming(path, make);
    return session::makeSession(std::move(made.time), std::move(made.robot), reopen);
  };
}

SessionReplay::SessionReplay(Preparation&& preparation)
    : isOwnSession(preparation.isOwnSession), session(std::exchange(preparation.open, nullptr)()) {}

SessionReplay::SessionReplay(const std::string& path, const sensor::SensorFactory& sensors)
    : SessionReplay(Preparation(path, sensors)) {}

SessionReplay::~SessionReplay() = default;

BagRobot& SessionReplay::xGetRobot() const {
  return static_cast<BagRobot&>(robotOf(*session));
}

void SessionReplay::begin() {
  if (!isOwnSession) session->subscribe("recording", session->getManager().getFamilyNames());
}

session::Snapshot SessionReplay::look() const {
  session::Snapshot snapshot = session->look();
  for (session::SensorState& sensor : snapshot.sensors) {
    if (!xGetRobot().isNew(sensor.name)) sensor.records.clear();
  }
  return snapshot;
}

std::optional<RecordDifference> SessionReplay::compare() const {
  const auto* recorded = xGetRobot().getRecorded();
  if (!recorded) return std::nullopt;
  return findDifference(*recorded, session::recordsOf(session->look()), ko::Clock::now());
}

ko::Duration SessionReplay::getTime() const {
  return ko::Clock::now() - xGetRobot().getStart();
}

ko::Duration SessionReplay::getLength() const {
  return *session->getLength();
}

std::optional<std::uint64_t> SessionReplay::getLookCount() const {
  return xGetRobot().getBag().getCount(kRecordsTopic);
}

std::uint64_t SessionReplay::countLeftOut() const {
  return xGetRobot().countLeftOut();
}

const BagDamage& SessionReplay::getDamage() const {
  return xGetRobot().getBag().getDamage();
}

bool isRecording(const std::string& path) {
  std::array<char, 16> begin{};
  std::ifstream(path, std::ios::binary).read(begin.data(), begin.size());
  const std::string_view text(begin.data(), begin.size());
  return text.starts_with("\x89MCAP") || text.starts_with("SQLite format 3") ||
         path.ends_with(".mcap") || path.ends_with(".db3") || std::filesystem::is_directory(path);
}

}  // namespace QV::ros2
