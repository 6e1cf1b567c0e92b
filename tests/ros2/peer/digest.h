#pragma once

#include <cstddef>
#include <cstdint>

namespace QV::test {

/** FNV-1a of the bytes of a message: two that differ hardly ever have the same. */
inline std::uint64_t digestOf(const std::uint8_t* bytes, std::size_t size) {
  std::uint64_t digest = 14'695'981'039'346'656'037u;
  for (std::size_t i = 0; i < size; ++i) digest = (digest ^ bytes[i]) * 1'099'511'628'211u;
  return digest;
}

}  // namespace QV::test
