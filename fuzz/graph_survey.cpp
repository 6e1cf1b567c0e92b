/**
 * What a graph tells before its robot is read: map, clock, description and a camera's optics, sound
 * messages with any bytes put into them. Each is refused, or gives what the rest can rely on.
 */
#include <cmath>
#include <optional>
#include <stdexcept>

#include "fuzz/quiet_run.h"
#include "fuzz/sound_message.h"
#include "fuzz/value_decoder.h"
#include "platform/model/model_utils.h"
#include "ros2/link/internal/heard_time.h"
#include "ros2/messages/scene_msgs.h"
#include "ros2/recording/internal/conversions.h"
#include "ros2/recording/internal/topic_survey.h"
#include "tests/ros2/support/sample_messages.h"

namespace QV::fuzz {
namespace {

using namespace ros2;
using Next = std::function<std::uint8_t()>;

/** Returns what `make` makes; std::nullopt if it refuses. */
template <typename Make>
auto unlessRefused(const Make& make) -> std::optional<decltype(make())> {
  try {
    return make();
  } catch (const std::exception& error) {
    check(error.what()[0] != '\0', "an error without a text");
    return std::nullopt;
  }
}

template <typename Message>
std::optional<Message> decoded(const Sound& sound, const Next& next) {
  const Bytes cdr = changed(sound.cdr, next);
  return unlessRefused([&] { return fromCdr<Message>(cdr); });
}

Sound grid() {
  nav_msgs::OccupancyGrid grid;
  grid.header.frame_id = "map";
  grid.info.resolution = 0.1f;
  grid.info.width = 8;
  grid.info.height = 4;
  grid.info.origin.orientation.w = 1.0;
  grid.data.assign(32, 0);
  grid.data[5] = 100;
  grid.data[6] = -1;
  return sound(grid);
}

void readMap(const Next& next) {
  static const Sound known = grid();
  const auto message = decoded<nav_msgs::OccupancyGrid>(known, next);
  if (!message) return;
  const auto map = unlessRefused([&] { return mapOf(*message); });
  if (!map) return;
  check(map->getCells().size() == message->data.size(), "cells are lost");
  for (const float cell : map->getCells()) check(cell >= 0.0f && cell <= 1.0f, "no occupancy");
  map->findOccupancy({0.5f, 0.2f});
}

void readClock(const Next& next) {
  static const Sound clock = sound(rosgraph_msgs::Clock{{1000, 0}});
  static const Sound header = sound(std_msgs::Header{{1000, 0}, "base"});
  HeardTime sut(HeardTime::Source::clockTopic);
  sut.setPublished(true);
  sut.setClock({1000, 0});
  sut.begin(ko::Clock::now());
  auto last = sut.now();
  for (int messages = 0; messages < kMostMessages; ++messages) {
    if (const auto told = decoded<rosgraph_msgs::Clock>(clock, next)) sut.setClock(told->clock);
    if (next() % 4 == 0) sut.setPublished(next() % 2 == 0);
    const auto now = sut.now();
    check(now >= last && now - last <= boost::chrono::minutes(1), "time leaps");
    last = now;
    const auto stamped = decoded<std_msgs::Header>(header, next);
    if (!stamped) continue;
    const auto time = unlessRefused([&] { return sut.date(stamped->stamp); });
    check(!time || *time <= ko::Clock::now(), "a message of the future");
  }
}

Sound optics() {
  sensor_msgs::CameraInfo info;
  info.header.frame_id = "camera";
  info.width = 4;
  info.height = 3;
  info.k = {4.0, 0.0, 2.0, 0.0, 4.0, 1.5, 0.0, 0.0, 1.0};
  return sound(info);
}

void readOptics(const Next& next, bool describes) {
  static const Sound known = optics();
  static const Sound image = sound(test::sampleImage("32FC1", 4, 0x3f));
  static const std::string topics[] = {"/camera/image", "/camera/camera_info"};
  TopicSurveyor surveyor;
  surveyor.expect(topics[0], image.type->getName());
  surveyor.take({topics[0], image.type->getName(), image.cdr});
  const Bytes cdr = changed(known.cdr, next);
  surveyor.take({topics[1], known.type->getName(), cdr});
  const TopicSurvey survey = surveyor.make();
  check(survey.sensors.size() == 1, "the camera is lost");
  const ToldSensor& camera = survey.sensors.begin()->second;
  for (const float angle : {camera.aperture, camera.verticalAperture})
    check(angle > 0.0f && angle <= 3.15f, "no aperture");
  if (describes) Model::ModelUtils::robotFromXml(describe(survey));
}

constexpr char kDescription[] =
    R"(<robot name="r"><kind code="1"/><link name="base"/><link name="a"/>
<joint name="j" type="prismatic"><parent link="base"/><child link="a"/><origin xyz="1 0 .5" rpy="0 0 1"/>
<limit lower="0" upper="1" effort="1" velocity="1"/></joint>
<sensor name="S" type="Sonar"><parent link="a"/><property key="maximumDetectionDistance" value="4"/>
<property key="topic" value="/s"/><memory_key>s</memory_key></sensor>
<sensor name="L" type="Laser"><parent link="base"/><property key="regIndex" value="1"/>
<memory_keys pattern="L{i}/{X,Y}" count="3"/></sensor></robot>)";

void readDescription(const Next& next) {
  static const Sound known = sound(std_msgs::String{kDescription});
  const auto message = decoded<std_msgs::String>(known, next);
  if (!message) return;
  static const Model::SensorKinds& kinds = Model::SensorKinds::standard();
  const auto survey = unlessRefused([&] {
    return surveyDescription(Model::ModelUtils::robotFromXml(message->data, kinds), kinds);
  });
  if (!survey) return;
  check(!survey->base.empty(), "a robot without a base");
  for (const auto& [topic, sensor] : survey->sensors)
    check(!topic.empty() && !sensor.name.empty(), "a sensor without a name");
}

void read(const std::uint8_t* data, std::size_t size) {
  // XML takes a hundred times as long as the others.
  const bool describes = isOneOf(64, data, size);
  const auto* const end = data + size;
  const Next next = [&] { return data < end ? *data++ : std::uint8_t{0}; };
  switch (next() % 4) {
    case 0:
      return readMap(next);
    case 1:
      return readClock(next);
    case 2:
      return readOptics(next, describes);
    default:
      if (describes) readDescription(next);
  }
}

}  // namespace
}  // namespace QV::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  return QV::fuzz::runQuietly(QV::fuzz::read, data, size);
}
