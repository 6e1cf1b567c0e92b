#include "apps/arguments.h"

#include <charconv>
#include <cmath>
#include <sstream>

#include "session/usage_error.h"

namespace QV::app {
namespace {

constexpr std::size_t kMostWaypoints = 10'000;

// Nothing but finite numbers with single commas between them.
std::vector<float> parseNumbers(const std::string& text, std::size_t count,
                                const std::string& expected) {
  std::vector<float> numbers;
  const char* next = text.data();
  const char* const end = next + text.size();
  while (numbers.size() < count) {
    float number = 0.0f;
    const auto [rest, error] = std::from_chars(next, end, number);
    if (error != std::errc() || !std::isfinite(number)) break;
    numbers.push_back(number);
    next = rest;
    if (numbers.size() == count || next == end || *next != ',') break;
    ++next;
  }
  if (numbers.size() != count || next != end) {
    throw session::UsageError(expected + " expected, \"" + text + "\" given");
  }
  return numbers;
}

}  // namespace

Math::Pose2D parsePose(const std::string& text) {
  return Math::Pose2D(parseNumbers(text, 3, "--pose: x,y,theta in metres and radians"));
}

std::vector<Math::Position2D> parsePath(const std::string& text) {
  std::vector<Math::Position2D> path;
  std::istringstream words(text);
  for (std::string word; words >> word;) {
    const auto numbers = parseNumbers(word, 2, "--path: positions x,y in metres");
    const Math::Position2D position(numbers[0], numbers[1]);
    if (path.empty() || !(position == path.back())) path.push_back(position);
    if (path.size() > kMostWaypoints)
      throw session::UsageError("--path: at most 10000 positions expected");
  }
  if (path.size() < 2) {
    throw session::UsageError(
        "--path: two different positions or more expected, as in \"1,1 4,1\", \"" + text +
        "\" given");
  }
  return path;
}

}  // namespace QV::app
