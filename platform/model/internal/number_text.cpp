#include "platform/model/internal/number_text.h"

#include <charconv>
#include <clocale>
#include <cmath>
#include <cstdlib>
#include <system_error>

namespace QV::Model {
namespace {

template <typename Number>
std::optional<Number> toWhole(std::string_view text) {
  // from_chars takes no plus sign.
  if (text.starts_with('+') && !text.starts_with("+-")) text.remove_prefix(1);
  Number number{};
  const char* const end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, number);
  if (error != std::errc() || stop != end) return std::nullopt;
  return number;
}

locale_t cLocale() {
  static const locale_t locale = newlocale(LC_ALL_MASK, "C", nullptr);
  return locale;
}

}  // namespace

double atofC(const std::string& text) {
  return strtod_l(text.c_str(), nullptr, cLocale());
}

std::optional<double> toNumber(std::string_view text) {
  const std::optional<double> number = toWhole<double>(text);
  return number && std::isfinite(*number) ? number : std::nullopt;
}

std::optional<int> toInteger(std::string_view text) {
  return toWhole<int>(text);
}

}  // namespace QV::Model
