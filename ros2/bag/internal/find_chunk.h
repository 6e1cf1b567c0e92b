#pragma once

#include <optional>

#include "ros2/bag/internal/byte_source.h"

namespace QV::ros2 {

/** True if a chunk begins there, and what it says of its own length holds. */
bool isWholeChunk(const ByteSource& source, std::uint64_t place);

/**
 * Finds where the next chunk begins that is whole by what it says of itself; nothing if there is
 * none.
 */
std::optional<std::uint64_t> findChunk(const ByteSource& source, std::uint64_t from);

}  // namespace QV::ros2
