#pragma once

#include <cstdint>
#include <libdeflate.h>

#include "ros2/messages/message_type.h"

namespace QV::ros2 {

/** The CRC-32 of zlib, going on from that of the bytes before. */
inline std::uint32_t crc32(BytesView bytes, std::uint32_t before = 0) {
  return libdeflate_crc32(before, bytes.data(), bytes.size());
}

}  // namespace QV::ros2
