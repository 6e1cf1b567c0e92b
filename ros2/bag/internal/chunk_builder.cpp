#include "ros2/bag/internal/chunk_builder.h"

#include <algorithm>

#include "ros2/bag/internal/crc32.h"
#include "ros2/bag/internal/record_bytes.h"

namespace QV::ros2 {
namespace {

/** Space that one huge message took is given back. */
constexpr std::size_t kMostKept = std::size_t{4} << 20;

}  // namespace

bool ChunkBuilder::isFull(std::size_t size, std::uint64_t logTime) const {
  if (records.empty()) return false;
  const std::uint64_t passed = std::max(logTime, firstTime) - std::min(logTime, firstTime);
  return passed >= options.chunkTime || records.size() + size > options.chunkSize;
}

void ChunkBuilder::add(const mcap::Message& message) {
  if (records.empty()) firstTime = startTime = endTime = message.logTime;
  startTime = std::min(startTime, message.logTime);
  endTime = std::max(endTime, message.logTime);
  places[message.channelId].push_back({message.logTime, records.size()});
  append(records, message);
}

mcap::ChunkIndex ChunkBuilder::write(OutputFile& file) {
  const mcap::Chunk chunk{
      startTime,           endTime, records.size(), crc32(records), getName(options.compression),
      packer.pack(records)};
  head.clear();
  appendChunkHead(head, chunk);
  mcap::ChunkIndex index{startTime, endTime, file.getSize(), head.size() + chunk.packed.size()};
  index.compression = chunk.compression;
  index.packedSize = chunk.packed.size();
  index.size = chunk.size;
  xFillIndexes(index);
  const bool isPacked = options.compression != Compression::none;
  const auto crc = isPacked ? std::nullopt : std::optional(chunk.crc);
  file.write({{head}, {chunk.packed, crc}, {indexes}});
  xClear();
  return index;
}

void ChunkBuilder::xFillIndexes(mcap::ChunkIndex& index) {
  indexes.clear();
  for (const auto& [channel, list] : places) {
    if (list.empty()) continue;
    index.messageIndexOffsets[channel] = index.offset + index.length + indexes.size();
    const std::size_t bytes = list.size() * sizeof(Place);
    RecordWriter(indexes)
        .number(static_cast<std::uint8_t>(mcap::Op::messageIndex))
        .number(std::uint64_t{sizeof channel + sizeof(std::uint32_t) + bytes})
        .number(channel)
        .number(static_cast<std::uint32_t>(bytes))
        .raw({reinterpret_cast<const std::uint8_t*>(list.data()), bytes});
  }
  index.messageIndexLength = indexes.size();
}

void ChunkBuilder::xClear() {
  records.clear();
  if (records.capacity() > kMostKept) records.shrink_to_fit();
  for (auto& [channel, list] : places) list.clear();
}

}  // namespace QV::ros2
