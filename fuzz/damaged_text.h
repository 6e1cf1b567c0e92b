#pragma once

#include <algorithm>
#include <cctype>
#include <cstdint>
#include <map>
#include <span>
#include <string>
#include <string_view>
#include <vector>

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

/** A sound text, and other words for it. All texts must outlive it. */
class SoundText {
 public:
  SoundText(std::string_view text, std::span<const std::string_view> others)
      : text(text), others(others) {
    for (std::size_t i = 0; i < text.size(); ++i) {
      if (i == 0 || !xIsOfWord(text[i - 1]) || !xIsOfWord(text[i])) begins.push_back(i);
    }
    begins.push_back(text.size());
  }

  /**
   * The text with words, or letters between them, exchanged. Each takes 2 bytes of place, and 1
   * that chooses another word or, beyond these, how many of the bytes that follow. What comes out
   * is sound more often than with damaged().
   */
  std::string changed(std::span<const std::uint8_t> bytes) const {
    std::map<std::size_t, std::string_view> changes;
    while (bytes.size() >= 3) {
      const std::size_t part = (bytes[0] * 256u + bytes[1]) % (begins.size() - 1);
      const std::size_t choice = bytes[2];
      bytes = bytes.subspan(3);
      changes[part] = choice < others.size() ? others[choice] : xTake(bytes, choice % 8);
    }
    std::string result;
    std::size_t end = 0;
    for (const auto& [part, other] : changes) {
      result.append(text, end, begins[part] - end).append(other);
      end = begins[part + 1];
    }
    return result.append(text, end);
  }

 private:
  static bool xIsOfWord(char letter) {
    return std::isalnum(static_cast<unsigned char>(letter)) != 0 ||
           std::string_view("+-._").find(letter) != std::string_view::npos;
  }
  static std::string_view xTake(std::span<const std::uint8_t>& bytes, std::size_t count) {
    const auto taken = bytes.first(std::min(count, bytes.size()));
    bytes = bytes.subspan(taken.size());
    return {reinterpret_cast<const char*>(taken.data()), taken.size()};
  }

  const std::string_view text;
  const std::span<const std::string_view> others;
  /** Where each word, and each letter between words, begins; the last is the text's end. */
  std::vector<std::size_t> begins;
};

}  // namespace QV::fuzz
