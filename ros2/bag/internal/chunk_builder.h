#pragma once

#include <map>
#include <optional>
#include <vector>

#include "ros2/bag/internal/compression.h"
#include "ros2/bag/internal/mcap_records.h"
#include "ros2/bag/internal/output_file.h"

namespace QV::ros2 {

/** Gathers messages and writes them as a chunk with its indexes. */
class ChunkBuilder {
 public:
  explicit ChunkBuilder(const BagOptions& options)
      : options(options), packer(options.compression) {}

  void add(const mcap::Message& message);
  /** True if the chunk is to be written before a message of `size` bytes and this time comes in. */
  bool isFull(std::size_t size, std::uint64_t logTime) const;
  bool isEmpty() const { return records.empty(); }

  /** Empties it; gives where in the file everything went. */
  mcap::ChunkIndex write(OutputFile& file);

 private:
  struct Place {
    std::uint64_t logTime;
    std::uint64_t offset;
  };

  void xFillIndexes(mcap::ChunkIndex& index);
  void xClear();

  const BagOptions options;
  Packer packer;
  Bytes records;
  Bytes head;
  Bytes indexes;
  std::uint64_t firstTime = 0;
  std::uint64_t startTime = 0;
  std::uint64_t endTime = 0;
  std::map<std::uint16_t, std::vector<Place>> places;
};

}  // namespace QV::ros2
