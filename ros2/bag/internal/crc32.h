#pragma once

#include <cstdint>
#include <libdeflate.h>
#include <zlib.h>

#include "ros2/messages/message_type.h"

namespace QV::ros2 {

/** The CRC-32 of zlib, going on from that of the bytes before. */
inline std::uint32_t crc32(BytesView bytes, std::uint32_t before = 0) {
  // libdeflate_crc32 of a null pointer ignores `before`, so an empty range is handled here.
  return bytes.empty() ? before : libdeflate_crc32(before, bytes.data(), bytes.size());
}

/** The CRC-32 of bytes and `size` more behind them, from that of each. */
inline std::uint32_t crc32Of(std::uint32_t before, std::uint32_t behind, std::size_t size) {
  return static_cast<std::uint32_t>(crc32_combine(before, behind, static_cast<z_off_t>(size)));
}

}  // namespace QV::ros2
