#include "platform/model/internal/attribute_limit.h"

#include <algorithm>
#include <cstddef>
#include <stdexcept>
#include <string>

namespace QV::Model::detail {
namespace {

constexpr int kMostAttributes = 100;

/** What is no element, and may hold any letters up to its end. */
constexpr std::string_view kOthers[][2] = {
    {"<!--", "-->"}, {"<![CDATA[", "]]>"}, {"<?", "?>"}, {"<!", ">"}};

[[noreturn]] void refuse(std::string_view before) {
  throw std::runtime_error("robot description, line " +
                           std::to_string(1 + std::count(before.begin(), before.end(), '\n')) +
                           ": at most " + std::to_string(kMostAttributes) +
                           " attributes in an element expected, more given");
}

std::size_t endOfTag(std::string_view xml, std::size_t begin) {
  int count = 0;
  std::size_t at = xml.find_first_of("\"'>", begin);
  while (at != std::string_view::npos && xml[at] != '>') {
    if (++count > kMostAttributes) refuse(xml.substr(0, at));
    const std::size_t valueEnd = xml.find(xml[at], at + 1);
    at = valueEnd == std::string_view::npos ? valueEnd : xml.find_first_of("\"'>", valueEnd + 1);
  }
  return at;
}

std::size_t endOfMarkup(std::string_view xml, std::size_t begin) {
  for (const auto& [first, last] : kOthers) {
    if (xml.substr(begin).starts_with(first)) return xml.find(last, begin + first.size());
  }
  return endOfTag(xml, begin);
}

}  // namespace

void checkAttributeCounts(std::string_view xml) {
  std::size_t at = 0;
  while ((at = xml.find('<', at)) != std::string_view::npos) at = endOfMarkup(xml, at);
}

}  // namespace QV::Model::detail
