#pragma once

#include <algorithm>
#include <cstdint>
#include <string>
#include <string_view>

namespace QV::fuzz {

/**
 * The text with stretches of it exchanged for others: 2 bytes of place, 1 of what goes, 1 of how
 * much comes, and that.
 */
inline std::string damaged(std::string_view text, const std::uint8_t* data, std::size_t size) {
  std::string result(text);
  std::string_view rest(reinterpret_cast<const char*>(data), size);
  const auto take = [&rest](std::size_t count) {
    const std::string_view taken = rest.substr(0, count);
    rest.remove_prefix(taken.size());
    return taken;
  };
  const auto number = [&](std::size_t bytes) {
    std::size_t value = 0;
    for (const char byte : take(bytes)) value = value * 256 + static_cast<unsigned char>(byte);
    return value;
  };
  while (!rest.empty()) {
    const std::size_t place = std::min(number(2), result.size());
    const std::size_t goes = number(1);
    const std::size_t comes = number(1);
    result.replace(place, goes, take(comes));
  }
  return result;
}

}  // namespace QV::fuzz
