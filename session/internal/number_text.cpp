#include "session/internal/number_text.h"

#include <array>
#include <charconv>

#include "platform/navigation/internal/map_shift.h"

namespace QV::session {

namespace {

template <typename Number>
std::string shortestOf(Number value) {
  std::array<char, 64> text;
  const auto result = std::to_chars(text.begin(), text.end(), value);
  return std::string(text.begin(), result.ptr);
}

}  // namespace

std::string shortest(float value) {
  return shortestOf(value);
}

std::string shortest(double value) {
  return shortestOf(value);
}

std::string shortest(float value, double shift) {
  return shift == 0.0 ? shortest(value) : fixed(unshifted(value, shift), 3);
}

std::string fixed(double value, int decimals) {
  std::array<char, 400> text;
  const auto result =
      std::to_chars(text.begin(), text.end(), value, std::chars_format::fixed, decimals);
  return std::string(text.begin(), result.ptr);
}

}  // namespace QV::session
