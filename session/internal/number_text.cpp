#include "session/internal/number_text.h"

#include <array>
#include <charconv>

namespace QV::session {

std::string shortest(float value) {
  std::array<char, 64> text;
  const auto result = std::to_chars(text.begin(), text.end(), value);
  return std::string(text.begin(), result.ptr);
}

std::string fixed(double value, int decimals) {
  std::array<char, 400> text;
  const auto result =
      std::to_chars(text.begin(), text.end(), value, std::chars_format::fixed, decimals);
  return std::string(text.begin(), result.ptr);
}

}  // namespace QV::session
