#include "apps/arguments.h"

#include <charconv>
#include <cmath>
#include <limits>
#include <sstream>

#include "platform/navigation/internal/map_shift.h"
#include "session/usage_error.h"

namespace QV::app {
namespace {

constexpr std::size_t kMostWaypoints = 10'000;

// Nothing but finite numbers with single commas between them.
template <typename Number>
std::vector<double> readNumbers(const std::string& text, std::size_t count,
                                const std::string& expected) {
  constexpr Number kMost = std::numeric_limits<float>::max();
  std::vector<double> numbers;
  const char* next = text.data();
  const char* const end = next + text.size();
  while (numbers.size() < count) {
    Number number{};
    const auto [rest, error] = std::from_chars(next, end, number);
    if (error != std::errc() || !(std::abs(number) <= kMost)) break;
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

// Positions are floats. Only one that is shifted first needs the digits of a double.
std::vector<double> parseNumbers(const std::string& text, std::size_t count,
                                 const std::string& expected, const MapShift& shift) {
  return isShifted(shift) ? readNumbers<double>(text, count, expected)
                          : readNumbers<float>(text, count, expected);
}

Math::Position2D shifted(const std::vector<double>& numbers, const MapShift& shift) {
  return {static_cast<float>(numbers[0] - shift.x), static_cast<float>(numbers[1] - shift.y)};
}

}  // namespace

MapShift parseShift(const std::string& text) {
  const auto numbers = readNumbers<double>(text, 2, "--shift-origin: x,y in metres");
  return {numbers[0], numbers[1]};
}

Math::Pose2D parsePose(const std::string& text, const MapShift& shift) {
  const auto numbers = parseNumbers(text, 3, "--pose: x,y,theta in metres and radians", shift);
  const Math::Position2D at = shifted(numbers, shift);
  return {at.x, at.y, static_cast<float>(numbers[2])};
}

std::vector<Math::Position2D> parsePath(const std::string& text, const MapShift& shift) {
  std::vector<Math::Position2D> path;
  std::istringstream words(text);
  for (std::string word; words >> word;) {
    const Math::Position2D position =
        shifted(parseNumbers(word, 2, "--path: positions x,y in metres", shift), shift);
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
