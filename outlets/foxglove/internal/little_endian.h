#pragma once

#include <bit>
#include <string>

namespace QV::outlets::foxglove {

static_assert(std::endian::native == std::endian::little, "numbers are sent as they lie in memory");

/** A number's bytes, little-endian. */
template <typename T>
void appendBytes(std::string& bytes, const T& value) {
  bytes.append(reinterpret_cast<const char*>(&value), sizeof value);
}

}  // namespace QV::outlets::foxglove
