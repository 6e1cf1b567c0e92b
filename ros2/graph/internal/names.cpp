#include "ros2/graph/internal/names.h"

#include <regex>
#include <stdexcept>

namespace QV::ros2 {
namespace {

void check(const std::string& what, const std::string& name, const char* pattern) {
  if (!std::regex_match(name, std::regex(pattern)))
    throw std::invalid_argument("a " + what +
                                " of letters, digits and _ that begin with no digit expected, \"" +
                                name + "\" given");
}

std::string join(const std::string& nameSpace, const std::string& name) {
  return nameSpace == "/" ? "/" + name : nameSpace + "/" + name;
}

}  // namespace

void checkNode(const std::string& name, const std::string& nameSpace) {
  check("node's name", name, "[A-Za-z_]\\w*");
  check("namespace", nameSpace, "/|(/[A-Za-z_]\\w*)+");
}

std::string expandTopic(const std::string& topic, const std::string& nameSpace,
                        const std::string& node) {
  check("topic", topic, "(/|~/)?[A-Za-z_]\\w*(/[A-Za-z_]\\w*)*");
  if (topic.front() == '/') return topic;
  if (topic.front() == '~') return join(nameSpace, node) + topic.substr(1);
  return join(nameSpace, topic);
}

std::optional<std::string> topicOfDds(const std::string& name) {
  if (!name.starts_with("rt/")) return std::nullopt;
  return name.substr(2);
}

std::optional<std::string> typeOfDds(const std::string& name) {
  std::smatch parts;
  if (!std::regex_match(name, parts, std::regex("(\\w+)::msg::dds_::(\\w+)_"))) return std::nullopt;
  return parts.str(1) + "/msg/" + parts.str(2);
}

}  // namespace QV::ros2
