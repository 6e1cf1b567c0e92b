#include "ros2/link/internal/graph_names.h"

#include <algorithm>
#include <stdexcept>

#include "platform/model/sensor_properties.h"
#include "platform/navigation/internal/map_shift.h"
#include "ros2/recording/internal/sensor_sorts.h"
#include "ros2/recording/internal/topic_names.h"

namespace QV::ros2 {
namespace {

bool isInShiftedMap(const session::Session& session) {
  const auto map = session.getMap();
  return map && isShifted(map->getShift());
}

std::set<std::string> framesOf(const session::Session& session) {
  std::set<std::string> frames{FrameNames::kMap, FrameNames::kOdometry,
                               FrameNames(session).ofBase()};
  for (const std::string& sensor : mountedOn(session))
    frames.insert({sensor, FrameNames(session).ofOptics(sensor)});
  if (isInShiftedMap(session)) frames.insert(FrameNames::kUtm);
  return frames;
}

/** True if the sensor's frame is its link's of the same name, as a bumper's. */
bool isItsLink(const Model::SensorConfig& sensor, const Model::Robot& robot) {
  return sensor.name == sensor.parentLink && sensor.name != robot.rootLink &&
         sensor.origin == Math::Transform();
}

/** std::invalid_argument for a name that the description gives to two frames. */
void checkDescription(const session::Session& session) {
  const auto* robot = session.getDescription();
  if (!robot) return;
  std::map<std::string, std::string> owners{{FrameNames::kMap, "the map"},
                                            {FrameNames::kOdometry, "odometry"}};
  if (isInShiftedMap(session)) owners[FrameNames::kUtm] = "the map's file";
  const auto add = [&](const std::string& name, const std::string& what) {
    const auto [owner, isNew] = owners.emplace(name, what);
    if (!isNew)
      throw std::invalid_argument("a name of its own for each frame expected, \"" + name +
                                  "\" given for " + owner->second + " and for " + what);
  };
  for (const std::string& link : robot->links) add(link, "a link");
  for (const auto& [name, sensor] : robot->sensorConfigs)
    if (!isItsLink(sensor, *robot)) add(name, "a sensor");
  for (const auto& [name, sensor] : robot->sensorConfigs)
    if (isCamera(sensor)) add(name + "_optical", "the images of " + name);
}

/** std::invalid_argument for a name that tf2 refuses or that two frames have. */
void checkFrames(const FrameNames& names, const std::set<std::string>& frames) {
  std::map<std::string, std::string> owners;
  for (const std::string& frame : frames) {
    const std::string name = names.of(frame);
    for (const std::string& text : {name, names.withoutPrefix(frame)}) {
      if (text.empty() || text.front() == '/')
        throw std::invalid_argument("a frame's name without a slash before it expected, \"" + text +
                                    "\" given");
    }
    const auto [owner, isNew] = owners.emplace(name, frame);
    if (!isNew)
      throw std::invalid_argument("a name of its own for each frame expected, \"" + name +
                                  "\" given for " + owner->second + " and " + frame);
  }
}

/** std::invalid_argument for a frame with the name of another link, as tf may have both. */
void checkLinks(const session::Session& session,
                const std::map<std::string, std::string>& renamed) {
  if (!session.getDescription()) return;
  const auto& links = session.getDescription()->links;
  const auto isLink = [&](const std::string& name) {
    return std::ranges::find(links, name) != links.end();
  };
  for (const auto& [frame, name] : renamed) {
    if (name != frame && isLink(name) && renamed.count(name) == 0)
      throw std::invalid_argument("a name that no other link has expected, \"" + name +
                                  "\" given for " + frame);
  }
}

}  // namespace

std::string nodeNameOf(const session::Session& session, const std::string& asked) {
  if (!asked.empty()) return asked;
  const auto* robot = session.getDescription();
  if (!robot || robot->name.empty()) return "qv_robot";
  std::string name = toGraphName(robot->name);
  for (char& letter : name) {
    if (letter == '/') letter = '_';
  }
  return name;
}

// A camera's CameraInfo is beside its images, wherever these are.
std::map<std::string, std::string> topicsNamedBy(const session::Session& session) {
  std::map<std::string, std::string> topics;
  if (!session.getDescription()) return topics;
  for (const auto& [name, config] : session.getDescription()->sensorConfigs) {
    const std::string topic = Model::SensorProperties(config).getText("topic");
    if (topic.empty()) continue;
    for (const char* const what : {"scan", "range", "contact", "image"})
      topics[driverTopicOf(name, what)] = topic;
    topics[driverTopicOf(name, "camera_info")] =
        topic.substr(0, topic.rfind('/') + 1) + "camera_info";
  }
  return topics;
}

std::set<std::string> mountedOn(const session::Session& session) {
  std::set<std::string> names;
  if (!session.getDescription()) return names;
  for (const auto& [name, config] : session.getDescription()->sensorConfigs) names.insert(name);
  return names;
}

FrameNames frameNamesOf(const session::Session& session, const GraphRobotOptions& options) {
  const auto known = framesOf(session);
  for (const auto& [name, renamed] : options.frames) {
    if (known.count(name) == 0)
      throw std::invalid_argument(
          "a frame of the robot expected (map, odom, " +
          std::string(isInShiftedMap(session) ? "utm, " : "") + FrameNames(session).ofBase() +
          ", a sensor or NAME_optical of a camera), \"" + name + "\" given");
  }
  checkDescription(session);
  FrameNames names(session, options.frames, options.framePrefix);
  checkFrames(names, known);
  checkLinks(session, options.frames);
  return names;
}

}  // namespace QV::ros2
