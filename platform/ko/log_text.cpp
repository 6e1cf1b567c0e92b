#include <string>

#include "platform/ko/log.h"

namespace ko::log {

const char* getName(Level level) {
  static const char* const names[] = {"silent", "fatal", "error", "warning", "info", "verbose"};
  return names[static_cast<int>(level)];
}

std::string onOneLine(const std::string& text) {
  static const char digits[] = "0123456789abcdef";
  std::string result;
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    if (c == '\n') {
      result += "\\n";
    } else if (byte < 0x20 || byte == 0x7f) {
      result.append("\\x").append(1, digits[byte / 16]).append(1, digits[byte % 16]);
    } else {
      result += c;
    }
  }
  return result;
}

}  // namespace ko::log
