#include "outlets/internal/base64.h"

#include <cstdint>

namespace QV::outlets {

std::string toBase64(std::string_view bytes) {
  static const char digits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string text;
  text.reserve((bytes.size() + 2) / 3 * 4);
  for (std::size_t i = 0; i < bytes.size(); i += 3) {
    std::uint32_t group = 0;
    for (std::size_t j = i; j < i + 3; ++j) {
      group = group << 8 | (j < bytes.size() ? static_cast<unsigned char>(bytes[j]) : 0u);
    }
    for (unsigned j = 0; j < 4; ++j) {
      text += i + j > bytes.size() ? '=' : digits[group >> (18 - 6 * j) & 63];
    }
  }
  return text;
}

}  // namespace QV::outlets
