#include "ros2/link/internal/graph_names.h"

#include <cctype>
#include <stdexcept>

namespace QV::ros2 {
namespace {

std::set<std::string> framesOf(const session::Session& session) {
  std::set<std::string> frames{FrameNames::kMap, FrameNames::kOdometry,
                               FrameNames(session).ofBase()};
  for (const std::string& sensor : mountedOn(session))
    frames.insert({sensor, FrameNames(session).ofOptics(sensor)});
  return frames;
}

}  // namespace

std::string toGraphName(const std::string& text) {
  std::string name;
  for (const char letter : text) {
    const bool isDigit = std::isdigit(static_cast<unsigned char>(letter)) != 0;
    const bool isFirst = name.empty() || name.back() == '/';
    if (isDigit && isFirst) name += '_';
    const bool isKept = isDigit || letter == '/' || letter == '_' ||
                        (letter >= 'a' && letter <= 'z') || (letter >= 'A' && letter <= 'Z');
    name += isKept ? letter : '_';
  }
  return name;
}

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
      throw std::invalid_argument("a frame of the robot expected (map, odom, " +
                                  FrameNames(session).ofBase() + " or a sensor), \"" + name +
                                  "\" given");
    if (renamed.empty() || renamed.front() == '/')
      throw std::invalid_argument("a frame's name without a slash before it expected, \"" +
                                  renamed + "\" given");
  }
  return FrameNames(session, options.frames, options.framePrefix);
}

}  // namespace QV::ros2
