#include "ros2/recording/internal/told_robot.h"

#include <algorithm>
#include <filesystem>
#include <iterator>
#include <stdexcept>

#include <boost/make_shared.hpp>

#include "platform/ko/log.h"
#include "ros2/messages/scene_msgs.h"

namespace QV::ros2 {
namespace {

constexpr std::uint64_t kLongEnough = 30'000'000'000;
constexpr std::uint64_t kLongGap = 60'000'000'000;
constexpr ko::Duration kShortGap{1'000'000'000};

bool isReadable(const BagTopic& topic) {
  return topic.encoding == "cdr";
}

ToldMessage toldBy(const BagMessage& message) {
  return {message.topic->name, message.topic->type, message.data};
}

}  // namespace

TopicSurvey surveyTopics(const std::string& path) {
  BagReader bag(path);
  TopicSurveyor surveyor;
  bool tellsOdometry = false;
  for (const BagTopic* const topic : bag.getTopics()) {
    if (!isReadable(*topic) || bag.getCount(topic->name) == 0) continue;
    surveyor.expect(topic->name, topic->type);
    tellsOdometry = tellsOdometry || isOf<nav_msgs::Odometry>(topic->type);
  }
  const std::uint64_t start = bag.getTimes().start;
  while (const auto message = bag.next()) {
    const bool isComplete = surveyor.isComplete() && (!tellsOdometry || surveyor.hasOdometry());
    if (isComplete && message->logTime - start > kLongEnough) break;
    if (isReadable(*message->topic)) surveyor.take(toldBy(*message));
  }
  try {
    return surveyor.make();
  } catch (const std::runtime_error& error) {
    throw std::runtime_error(path + ": " + error.what());
  }
}

ToldRobot::ToldRobot(const std::string& path, std::unique_ptr<BagReader> givenBag,
                     const TopicSurvey& survey)
    : title("Recording " + std::filesystem::path(path).filename().string()),
      bag(std::move(givenBag)),
      modules(
          describe(survey), survey, [](const auto&) { return ko::Clock::now(); }, "Recording"),
      navigation(boost::make_shared<sensor::NavigationModule>(modules.getBroker())),
      start(ko::Clock::now()),
      lastLogTime(bag->getTimes().start),
      due(start) {
  hosting.emplace(modules.getBroker(), navigation);
}

bool ToldRobot::xTellsSensor(const BagMessage& message) const {
  return modules.getSurvey().sensors.count(message.topic->name) > 0;
}

void ToldRobot::xReadNext() const {
  while (!upcoming) {
    upcoming = bag->next();
    if (!upcoming) return;
    const BagTopic& topic = *upcoming->topic;
    if (!isReadable(topic) || !modules.hears(topic.name, topic.type)) upcoming.reset();
  }
  due = xTimeOf(upcoming->logTime);
}

ko::Clock::time_point ToldRobot::xTimeOf(std::uint64_t logTime) const {
  const std::uint64_t gap = logTime - std::min(lastLogTime, logTime);
  if (lastLogTime == logTime) return due;
  lastLogTime = logTime;
  if (gap > kLongGap) {
    ko::log::warning("Recording", "play")
        << "a gap of " << gap / 1'000'000'000 << " s is played as 1 s";
    return due + kShortGap;
  }
  return due + ko::Duration(static_cast<std::int64_t>(gap));
}

std::optional<ko::Clock::time_point> ToldRobot::getNextStep() const {
  if (!upcoming) xReadNext();
  if (!upcoming) return std::nullopt;
  return due;
}

void ToldRobot::makeStep() {
  if (!isAmid) modules.clearNews();
  if (!getNextStep()) return;
  const auto now = due;
  const bool tells = xTellsSensor(*upcoming);
  modules.tell(toldBy(*upcoming));
  upcoming.reset();
  // Messages of one time are one step.
  isAmid = (isAmid || !tells || getNextStep()) && getNextStep() && (!tells || due == now);
}

std::vector<Math::MetricalData> ToldRobot::getRecords() {
  std::vector<Math::MetricalData> records;
  const auto& manager = navigation->getManager();
  for (const std::string& name : manager.getSensorList())
    std::ranges::move(manager.getSensorPtr(name)->getData(), std::back_inserter(records));
  return records;
}

}  // namespace QV::ros2
