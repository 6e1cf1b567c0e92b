#include "apps/output/printable.h"

namespace QV::app {

std::string printable(const std::string& text) {
  static const char digits[] = "0123456789abcdef";
  std::string result;
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    if (c == '\n') {
      result += ' ';
    } else if (byte < 0x20 || byte == 0x7f) {
      result.append("\\x").append(1, digits[byte / 16]).append(1, digits[byte % 16]);
    } else {
      result += c;
    }
  }
  return result;
}

}  // namespace QV::app
