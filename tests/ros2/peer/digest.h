#pragma once

#include <cstddef>
#include <cstdint>

namespace QV::test {

/** FNV-1a of the bytes of a message: two that differ hardly ever have the same. An engine may fill
 * a message up to whole words, and say so in the last byte of its head or not: that does not
 * count. */
inline std::uint64_t digestOf(const std::uint8_t* bytes, std::size_t size) {
  constexpr std::size_t kOptions = 3;
  std::uint64_t digest = 14'695'981'039'346'656'037u;
  for (std::size_t i = 0; i < (size + 3) / 4 * 4; ++i) {
    const std::uint8_t byte = i < size && i != kOptions ? bytes[i] : 0;
    digest = (digest ^ byte) * 1'099'511'628'211u;
  }
  return digest;
}

}  // namespace QV::test
