#include "ros2/bag/internal/loaded_block.h"

#include <stdexcept>

#include "ros2/bag/internal/compression.h"
#include "ros2/bag/internal/crc32.h"
#include "ros2/bag/internal/record_walk.h"

namespace QV::ros2 {
namespace {

using mcap::Op;

struct Records {
  std::shared_ptr<std::uint8_t[]> owner;
  BytesView bytes;
};

/**
 * Allocates memory that is not touched before something is written to it: a size that lies costs
 * nothing.
 */
std::shared_ptr<std::uint8_t[]> allocate(std::uint64_t size) {
  return std::make_shared_for_overwrite<std::uint8_t[]>(static_cast<std::size_t>(size));
}

void expectLimit(std::uint64_t size, const McapLimits& limits) {
  if (size > limits.chunk)
    throw std::runtime_error("up to " + std::to_string(limits.chunk) + " bytes expected, " +
                             std::to_string(size) + " given");
}

Records readBytes(const ByteSource& source, const McapBlock& block, const McapLimits& limits) {
  expectLimit(block.length, limits);
  const auto owner = allocate(block.length);
  const std::span<std::uint8_t> bytes(owner.get(), static_cast<std::size_t>(block.length));
  source.read(block.offset, bytes);
  return {owner, bytes};
}

Records unpackChunk(const Records& read, const McapLimits& limits) {
  const auto [op, length] = mcap::parseHead(read.bytes);
  if (op != Op::chunk || length != read.bytes.size() - mcap::kHeadSize)
    throw std::runtime_error("a chunk of " + std::to_string(read.bytes.size()) +
                             " bytes expected, another record or length given");
  const mcap::Chunk chunk = mcap::parseChunk(read.bytes.subspan(mcap::kHeadSize));
  expectLimit(chunk.size, limits);
  Records records{read.owner, chunk.packed};
  if (!chunk.compression.empty() || chunk.size != chunk.packed.size()) {
    records.owner = allocate(chunk.size);
    const std::span<std::uint8_t> room(records.owner.get(), static_cast<std::size_t>(chunk.size));
    unpack(chunk.compression, chunk.packed, room);
    records.bytes = room;
  }
  if (chunk.crc != 0 && crc32(records.bytes) != chunk.crc) throw std::runtime_error("CRC is wrong");
  return records;
}

}  // namespace

LoadedBlock loadBlock(const ByteSource& source, const McapBlock& block, const McapLimits& limits,
                      McapContents& contents, DamageLog& damage) {
  Records records = readBytes(source, block, limits);
  if (block.isChunk) records = unpackChunk(records, limits);
  LoadedBlock loaded;
  // What is noted of messages takes no more than they may.
  const std::uint64_t mostEntries = limits.chunk / sizeof(LoadedBlock::Entry);
  std::uint64_t unknown = 0;
  walkRecords(records.bytes, [&](Op op, BytesView content) {
    if (op != Op::message) return contents.add(op, content);
    const mcap::Message message = mcap::parseMessage(content);
    const auto topic = contents.topics.find(message.channelId);
    if (topic == contents.topics.end()) return void(++unknown);
    loaded.entries.push_back({message.logTime, message.publishTime, &topic->second, message.data});
    if (loaded.entries.size() > mostEntries)
      throw std::runtime_error("up to " + std::to_string(mostEntries) +
                               " messages expected, more given");
  });
  if (unknown > 0) damage.addMessages(block.offset, unknown, "their channel is not known");
  loaded.records = records.owner;
  loaded.memory = records.bytes.size() + loaded.entries.capacity() * sizeof(LoadedBlock::Entry);
  return loaded;
}

}  // namespace QV::ros2
