#pragma once

#include <memory>
#include <vector>

#include "ros2/bag/internal/mcap_contents.h"

namespace QV::ros2 {

/** The messages of a block, in memory. */
struct LoadedBlock {
  struct Entry {
    std::uint64_t logTime;
    std::uint64_t publishTime;
    const BagTopic* topic;
    BytesView data;
  };

  /** The memory that the entries' data lies in. */
  std::shared_ptr<const std::uint8_t[]> records;
  std::vector<Entry> entries;
  /** The bytes of both. */
  std::size_t memory = 0;
};

/**
 * Loads a block in the file's order; its channels go to `contents`. Throws std::runtime_error if it
 * can't be read; messages of unknown channels are left out and counted.
 */
LoadedBlock loadBlock(const ByteSource& source, const McapBlock& block, const McapLimits& limits,
                      McapContents& contents, DamageLog& damage);

}  // namespace QV::ros2
