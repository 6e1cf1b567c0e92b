#include "ros2/recording/internal/recording_facts.h"

#include <array>
#include <charconv>
#include <cmath>
#include <cstring>
#include <stdexcept>

#include "platform/navigation/internal/map_shift.h"
#include "session/internal/session_parts.h"

namespace QV::ros2 {
namespace {

constexpr char kVersion[] = "1";
/** Width, height, resolution and origin, before the cells. */
constexpr std::size_t kMapHead = 6;

const std::string& textOf(const std::map<std::string, std::string>& values,
                          const std::string& name) {
  const auto found = values.find(name);
  if (found == values.end())
    throw std::runtime_error("\"" + name + "\" expected in the metadata \"qv\", it has none");
  return found->second;
}

template <typename Number>
Number numberOf(const std::map<std::string, std::string>& values, const std::string& name) {
  const std::string& text = textOf(values, name);
  Number number{};
  const auto end = text.data() + text.size();
  const auto [read, error] = std::from_chars(text.data(), end, number);
  if (error == std::errc() && read == end) return number;
  throw std::runtime_error("a number expected for \"" + name + "\" in the metadata \"qv\", \"" +
                           text.substr(0, 20) + "\" given");
}

ko::Duration periodOf(const std::map<std::string, std::string>& values, const std::string& name) {
  const ko::Duration period(numberOf<std::int64_t>(values, name));
  if (period >= ko::Duration(1'000'000) && period <= ko::Duration(3'600'000'000'000)) return period;
  throw std::runtime_error("a millisecond to an hour expected for \"" + name +
                           "\" in the metadata \"qv\", " + std::to_string(period.count()) +
                           " ns given");
}

MapShift shiftOf(const std::map<std::string, std::string>& values) {
  const MapShift shift{numberOf<double>(values, "shift_x"), numberOf<double>(values, "shift_y")};
  if (std::isfinite(shift.x) && std::isfinite(shift.y)) return shift;
  throw std::runtime_error(
      "finite numbers expected for \"shift_x\" and \"shift_y\" in the metadata \"qv\"");
}

template <typename Number>
std::string numberText(Number number) {
  std::array<char, 32> text;
  return {text.data(), std::to_chars(text.data(), text.data() + text.size(), number).ptr};
}

}  // namespace

std::map<std::string, std::string> RecordingFacts::toValues() const {
  std::map<std::string, std::string> values{
      {"version", kVersion},
      {"sort", sort},
      {"title", title},
      {"frame", getName(frame)},
      {"start", std::to_string(start.time_since_epoch().count())},
      {"radius", numberText(radius)},
      {"body_period", std::to_string(periods.body.count())},
      {"sonar_period", std::to_string(periods.sonars.count())}};
  if (isShifted(shift)) {
    values["shift_x"] = numberText(shift.x);
    values["shift_y"] = numberText(shift.y);
  }
  return values;
}

RecordingFacts RecordingFacts::fromValues(const std::map<std::string, std::string>& values) {
  if (textOf(values, "version") != kVersion)
    throw std::runtime_error("a recording of version 1 expected, version \"" +
                             textOf(values, "version").substr(0, 20) + "\" given");
  RecordingFacts facts;
  facts.sort = textOf(values, "sort");
  facts.title = textOf(values, "title");
  facts.frame = textOf(values, "frame") == "map" ? session::Frame::map : session::Frame::robot;
  facts.start = ko::Clock::time_point(ko::Duration(numberOf<std::int64_t>(values, "start")));
  facts.radius = numberOf<float>(values, "radius");
  facts.periods.body = periodOf(values, "body_period");
  facts.periods.sonars = periodOf(values, "sonar_period");
  if (values.count("shift_x") != 0) facts.shift = shiftOf(values);
  return facts;
}

RecordingFacts factsOf(session::Session& session) {
  session::SessionRobot& robot = robotOf(session);
  const auto map = session.getMap();
  return {robot.getSort(),
          robot.getTitle(),
          robot.getFrame(),
          ko::Clock::now(),
          robot.getRadius(),
          robot.getDriverPeriods(),
          map ? map->getShift() : MapShift()};
}

BagAttachment exactMapOf(const OccupancyMap& map) {
  const auto& origin = map.getOrigin();
  std::vector<float> numbers = {static_cast<float>(map.getWidth()),
                                static_cast<float>(map.getHeight()),
                                map.getResolution(),
                                origin.x,
                                origin.y,
                                origin.theta};
  numbers.insert(numbers.end(), map.getCells().begin(), map.getCells().end());
  BagAttachment attachment;
  attachment.name = kExactMap;
  attachment.mediaType = "application/octet-stream";
  attachment.data.resize(numbers.size() * sizeof(float));
  std::memcpy(attachment.data.data(), numbers.data(), attachment.data.size());
  return attachment;
}

OccupancyMap mapOf(const BagAttachment& attachment) {
  std::vector<float> numbers(attachment.data.size() / sizeof(float));
  std::memcpy(numbers.data(), attachment.data.data(), numbers.size() * sizeof(float));
  const bool isMap = numbers.size() > kMapHead && numbers[0] >= 1.0f && numbers[1] >= 1.0f &&
                     numbers[0] <= OccupancyMap::kMaxSide && numbers[1] <= OccupancyMap::kMaxSide;
  if (!isMap) throw std::runtime_error(std::string(kExactMap) + ": a map expected");
  return OccupancyMap(static_cast<int>(numbers[0]), static_cast<int>(numbers[1]), numbers[2],
                      {numbers[3], numbers[4], numbers[5]},
                      {numbers.begin() + kMapHead, numbers.end()});
}

}  // namespace QV::ros2
