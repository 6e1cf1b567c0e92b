#pragma once

#include <optional>

#include "ros2/bag/internal/byte_source.h"

namespace QV::ros2 {

/** True if a chunk begins there and its length is correct. */
bool isWholeChunk(const ByteSource& source, std::uint64_t place);

/**
 * Finds the beginning of the next chunk with a correct length; std::nullopt if there is none.
 */
std::optional<std::uint64_t> findChunk(const ByteSource& source, std::uint64_t from);

}  // namespace QV::ros2
