#include "ros2/graph/internal/names.h"

#include <algorithm>
#include <stdexcept>
#include <string_view>

namespace QV::ros2 {
namespace {

bool isDigit(char letter) {
  return letter >= '0' && letter <= '9';
}

bool hasOnlyWordLetters(std::string_view text) {
  return std::ranges::all_of(text, [](char letter) {
    return (letter >= 'a' && letter <= 'z') || (letter >= 'A' && letter <= 'Z') ||
           isDigit(letter) || letter == '_';
  });
}

bool isWord(std::string_view text) {
  return !text.empty() && !isDigit(text.front()) && hasOnlyWordLetters(text);
}

/** True for words with a slash between each two. */
bool isPath(std::string_view text) {
  for (auto slash = text.find('/'); slash != std::string_view::npos; slash = text.find('/')) {
    if (!isWord(text.substr(0, slash))) return false;
    text.remove_prefix(slash + 1);
  }
  return isWord(text);
}

bool isNameSpace(std::string_view text) {
  return text == "/" || (text.starts_with('/') && isPath(text.substr(1)));
}

bool isTopic(std::string_view text) {
  const std::size_t start = text.starts_with("~/") ? 2 : text.starts_with('/') ? 1 : 0;
  return isPath(text.substr(start));
}

void check(const std::string& what, const std::string& name, bool isValid) {
  if (!isValid)
    throw std::invalid_argument("a " + what +
                                " of letters, digits and _ that begin with no digit expected, \"" +
                                name + "\" given");
}

std::string join(const std::string& nameSpace, const std::string& name) {
  return nameSpace == "/" ? "/" + name : nameSpace + "/" + name;
}

}  // namespace

void checkNode(const std::string& name, const std::string& nameSpace) {
  check("node's name", name, isWord(name));
  check("namespace", nameSpace, isNameSpace(nameSpace));
}

std::string expandTopic(const std::string& topic, const std::string& nameSpace,
                        const std::string& node) {
  check("topic", topic, isTopic(topic));
  if (topic.front() == '/') return topic;
  if (topic.front() == '~') return join(nameSpace, node) + topic.substr(1);
  return join(nameSpace, topic);
}

std::optional<std::string> topicOfDds(const std::string& name) {
  if (!name.starts_with("rt/")) return std::nullopt;
  return name.substr(2);
}

std::optional<std::string> typeOfDds(const std::string& name) {
  constexpr std::string_view kBetween = "::msg::dds_::";
  const auto end = name.find(kBetween);
  if (end == std::string::npos || !name.ends_with('_')) return std::nullopt;
  const std::string package = name.substr(0, end);
  std::string type = name.substr(end + kBetween.size());
  type.pop_back();
  if (package.empty() || type.empty()) return std::nullopt;
  if (!hasOnlyWordLetters(package) || !hasOnlyWordLetters(type)) return std::nullopt;
  return package + "/msg/" + type;
}

}  // namespace QV::ros2
