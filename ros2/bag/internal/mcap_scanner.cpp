#include <algorithm>
#include <set>
#include <stdexcept>
#include <vector>

#include "ros2/bag/internal/find_chunk.h"
#include "ros2/bag/internal/loaded_block.h"
#include "ros2/bag/internal/mcap_contents.h"

namespace QV::ros2 {
namespace {

using mcap::kHeadSize;
using mcap::Op;

/** The bytes of messages outside of chunks that are read at a time. */
constexpr std::uint64_t kRunSize = std::uint64_t{1} << 20;

class Scanner {
 public:
  Scanner(const ByteSource& source, const McapLimits& limits, DamageLog& damage)
      : source(source), limits(limits), damage(damage), contents(limits) {}

  McapContents scan() {
    try {
      xScanRecords();
    } catch (const std::runtime_error& error) {
      damage.add(position, std::string("reading stopped here: ") + error.what());
    }
    xEndRun();
    xLoadAgain();
    return std::move(contents);
  }

 private:
  void xScanRecords() {
    while (const auto head = xReadHead()) {
      if (head->op == Op::dataEnd) contents.dataEnd = position;
      if (head->op == Op::dataEnd || head->op == Op::footer) break;
      contents.checkPlaces();
      xScanRecord(*head);
    }
  }

  /** Returns std::nullopt if the file is cut and no chunk follows. */
  std::optional<mcap::Head> xReadHead() {
    const auto head = xHeadAt(position);
    const bool isChunk = head && head->op == Op::chunk;
    if (head && head->op != Op{0} && (!isChunk || isWholeChunk(source, position))) return head;
    const auto next = findChunk(source, position + 1);
    if (!next) {
      damage.add(position, "the file is cut here");
      return std::nullopt;
    }
    damage.addChunk(position,
                    "a record with a wrong length; continued at byte " + std::to_string(*next));
    xEndRun();
    position = *next;
    return xHeadAt(position);
  }

  std::optional<mcap::Head> xHeadAt(std::uint64_t place) const {
    const std::uint64_t left = source.getSize() - place;
    if (left < kHeadSize) return std::nullopt;
    std::uint8_t bytes[kHeadSize];
    source.read(place, bytes);
    const mcap::Head head = mcap::parseHead(bytes);
    if (head.length > left - kHeadSize) return std::nullopt;
    return head;
  }

  void xScanRecord(const mcap::Head& head) {
    const std::uint64_t length = head.length + kHeadSize;
    const bool inRun = head.op == Op::message || head.op == Op::schema || head.op == Op::channel;
    if (inRun) xExtendRun(length);
    if (head.op == Op::chunk) xAddBlock({true, position, length});
    if (head.op == Op::metadata) contents.metadata.push_back(position);
    if (head.op == Op::attachment) contents.attachments.push_back(position);
    position += length;
  }

  void xExtendRun(std::uint64_t length) {
    if (run.length > 0 && (run.offset + run.length != position || run.length + length > kRunSize))
      xEndRun();
    if (run.length == 0) run.offset = position;
    run.length += length;
  }

  void xEndRun() {
    if (run.length > 0) xAddBlock(run);
    run.length = 0;
  }

  void xAddBlock(McapBlock block) {
    if (block.isChunk) xEndRun();
    try {
      DamageLog unknown("");
      const bool hasMessages = xLoad(block, unknown);
      if (unknown.get().messages > 0) again.push_back(contents.blocks.size());
      if (hasMessages || unknown.get().messages > 0) contents.blocks.push_back(block);
    } catch (const std::runtime_error& error) {
      damage.addChunk(block.offset, error.what());
    }
  }

  /** Sets the block's times; false if it has no message of a known channel. */
  bool xLoad(McapBlock& block, DamageLog& found) {
    const LoadedBlock loaded = loadBlock(source, block, limits, contents, found);
    if (loaded.entries.empty()) return false;
    const auto [first, last] =
        std::minmax_element(loaded.entries.begin(), loaded.entries.end(),
                            [](const auto& a, const auto& b) { return a.logTime < b.logTime; });
    block.startTime = first->logTime;
    block.endTime = last->logTime;
    return true;
  }

  // In a damaged file the channel record may follow its messages, so blocks are loaded again.
  void xLoadAgain() {
    std::set<std::uint64_t> empty;
    for (const std::size_t index : again) {
      McapBlock& block = contents.blocks[index];
      if (!xLoad(block, damage)) empty.insert(block.offset);
    }
    std::erase_if(contents.blocks,
                  [&](const auto& block) { return empty.count(block.offset) > 0; });
  }

  const ByteSource& source;
  const McapLimits& limits;
  DamageLog& damage;
  std::uint64_t position = mcap::kMagic.size();
  McapContents contents;
  /** Blocks with messages of channels that were not known then. */
  std::vector<std::size_t> again;
  McapBlock run{false};
};

}  // namespace

McapContents scan(const ByteSource& source, const McapLimits& limits, DamageLog& damage) {
  return Scanner(source, limits, damage).scan();
}

}  // namespace QV::ros2
