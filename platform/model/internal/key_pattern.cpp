#include "platform/model/internal/key_pattern.h"

#include <algorithm>
#include <stdexcept>
#include <variant>

namespace QV::Model::detail {
namespace {

constexpr std::size_t kMostLength = 256;

/** `{i}`: how many digits it has at least. */
struct Counter {
  std::size_t digits = 1;
};
using Alternatives = std::vector<std::string_view>;
/** A stretch of text is one alternative. */
using Part = std::variant<Alternatives, Counter>;

[[noreturn]] void refuse(const std::string& expected, std::string_view given) {
  throw std::invalid_argument("attribute pattern: " + expected + " expected, \"" +
                              std::string(given) + "\" given");
}

Alternatives split(std::string_view text) {
  Alternatives alternatives;
  for (std::size_t begin = 0; begin <= text.size();) {
    const std::size_t end = std::min(text.find(',', begin), text.size());
    alternatives.push_back(text.substr(begin, end - begin));
    begin = end + 1;
  }
  return alternatives;
}

Part readBraces(std::string_view inside) {
  if (inside == "i") return Counter{};
  if (inside.size() == 4 && inside.starts_with("i:0") && inside[3] >= '1' && inside[3] <= '9') {
    return Counter{static_cast<std::size_t>(inside[3] - '0')};
  }
  Alternatives alternatives = split(inside);
  const bool isAnyEmpty = std::ranges::any_of(alternatives, &std::string_view::empty);
  if (alternatives.size() < 2 || isAnyEmpty) {
    refuse("{i}, {i:02} or {X,Y}", std::string("{").append(inside).append("}"));
  }
  return alternatives;
}

std::vector<Part> parse(std::string_view pattern) {
  std::vector<Part> parts;
  for (std::size_t begin = 0; begin < pattern.size();) {
    const std::size_t brace = std::min(pattern.find_first_of("{}", begin), pattern.size());
    if (brace > begin) parts.push_back(Alternatives{pattern.substr(begin, brace - begin)});
    if (brace == pattern.size()) break;
    const std::size_t end = pattern.find_first_of("{}", brace + 1);
    if (pattern[brace] == '}' || end == std::string_view::npos || pattern[end] == '{') {
      refuse("braces in pairs, none within another,", pattern);
    }
    parts.push_back(readBraces(pattern.substr(brace + 1, end - brace - 1)));
    begin = end + 1;
  }
  return parts;
}

bool isCounter(const Part& part) {
  return std::holds_alternative<Counter>(part);
}

std::size_t checkedCount(bool counts, std::optional<int> count) {
  if (counts != count.has_value()) {
    throw std::invalid_argument(
        counts ? "an attribute count expected, as the pattern has {i}; it has none"
               : "{i} in the pattern expected, as there is a count; it has none");
  }
  if (count && *count < 1) {
    throw std::invalid_argument("attribute count: a number above 0 expected, \"" +
                                std::to_string(*count) + "\" given");
  }
  return static_cast<std::size_t>(count.value_or(1));
}

void checkNumber(const std::vector<Part>& parts, std::size_t count, std::size_t most) {
  std::size_t number = count;
  for (const Part& part : parts) {
    if (const auto* alternatives = std::get_if<Alternatives>(&part)) {
      if (number <= most) number *= alternatives->size();
    }
  }
  if (number > most) {
    throw std::invalid_argument("attribute pattern: at most " + std::to_string(most) +
                                " keys more expected, it gives over that");
  }
}

std::string paddedText(std::size_t number, std::size_t digits) {
  std::string text = std::to_string(number);
  if (text.size() < digits) text.insert(0, digits - text.size(), '0');
  return text;
}

/** The keys of one number, in order. */
std::vector<std::string> keysOf(const std::vector<Part>& parts, std::size_t number) {
  std::vector<std::string> keys = {""};
  for (const Part& part : parts) {
    if (const auto* counter = std::get_if<Counter>(&part)) {
      for (std::string& key : keys) key += paddedText(number, counter->digits);
      continue;
    }
    std::vector<std::string> longer;
    for (const std::string& key : keys) {
      for (const std::string_view text : std::get<Alternatives>(part)) {
        longer.push_back(key + std::string(text));
      }
    }
    keys = std::move(longer);
  }
  return keys;
}

}  // namespace

std::vector<std::string> expandKeyPattern(std::string_view pattern, std::optional<int> count,
                                          std::size_t most) {
  if (pattern.size() > kMostLength) {
    throw std::invalid_argument("attribute pattern: at most " + std::to_string(kMostLength) +
                                " characters expected, " + std::to_string(pattern.size()) +
                                " given");
  }
  const std::vector<Part> parts = parse(pattern);
  const std::size_t numbers = checkedCount(std::ranges::any_of(parts, isCounter), count);
  checkNumber(parts, numbers, most);
  std::vector<std::string> keys;
  for (std::size_t number = 0; number < numbers; ++number) {
    for (std::string& key : keysOf(parts, number)) keys.push_back(std::move(key));
  }
  return keys;
}

}  // namespace QV::Model::detail
