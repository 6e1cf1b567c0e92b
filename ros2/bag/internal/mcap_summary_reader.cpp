#include <algorithm>
#include <stdexcept>

#include "ros2/bag/internal/mcap_contents.h"

namespace QV::ros2 {
namespace {

using mcap::kFooterSize;
using mcap::kHeadSize;
using mcap::kMagic;
using mcap::Op;

mcap::Footer readFooter(const ByteSource& source) {
  std::uint8_t end[kFooterSize + kMagic.size()];
  if (source.getSize() < kMagic.size() + sizeof end) throw std::runtime_error("no footer");
  source.read(source.getSize() - sizeof end, end);
  if (!std::equal(kMagic.begin(), kMagic.end(), end + kFooterSize))
    throw std::runtime_error("no magic at the end");
  const auto [op, length] = mcap::parseHead(end);
  if (op != Op::footer || length != kFooterSize - kHeadSize) throw std::runtime_error("no footer");
  return mcap::parseFooter({end + kHeadSize, kFooterSize - kHeadSize});
}

/** Calls `visit(op, content)` for each of its records: it may be longer than memory is to hold. */
template <typename Visit>
void walkSummary(const ByteSource& source, const mcap::Footer& footer, const McapLimits& limits,
                 const Visit& visit) {
  const std::uint64_t end = source.getSize() - kMagic.size() - kFooterSize;
  if (footer.summaryStart < kMagic.size() || footer.summaryStart > end)
    throw std::runtime_error("no summary");
  // The CRC covers the part of the footer before it.
  const std::uint64_t covered = end + kFooterSize - sizeof footer.crc;
  if (footer.crc != 0 && crc32Between(source, footer.summaryStart, covered) != footer.crc)
    throw std::runtime_error("the summary's CRC is wrong");
  ByteWindow window(source);
  for (std::uint64_t place = footer.summaryStart; place < end;) {
    const auto [op, length] = mcap::parseHead(window.at(place, kHeadSize));
    place += kHeadSize;
    const std::uint64_t most = std::min(limits.texts, end - std::min(place, end));
    if (length > most)
      throw std::runtime_error("a record of up to " + std::to_string(most) + " bytes expected, " +
                               std::to_string(length) + " given");
    visit(op, window.at(place, length));
    place += length;
  }
}

class SummaryReader {
 public:
  SummaryReader(const mcap::Footer& footer, const McapLimits& limits)
      : footer(footer), contents(limits) {}

  void add(Op op, BytesView content) {
    contents.add(op, content);
    if (op == Op::statistics) statistics = mcap::parseStatistics(content);
    if (op == Op::chunkIndex) xAddChunk(mcap::parseChunkIndex(content));
    if (op == Op::metadataIndex)
      contents.metadata.push_back(mcap::parseMetadataIndex(content).offset);
    if (op == Op::attachmentIndex)
      contents.attachments.push_back(mcap::parseAttachmentIndex(content).offset);
    contents.checkPlaces();
  }

  McapContents finish() {
    if (!statistics) throw std::runtime_error("no statistics");
    if (statistics->chunkCount != contents.blocks.size() ||
        (statistics->messageCount > 0 && contents.blocks.empty()))
      throw std::runtime_error("the index does not list all chunks");
    auto& blocks = contents.blocks;
    std::sort(blocks.begin(), blocks.end(),
              [](const auto& a, const auto& b) { return a.offset < b.offset; });
    for (std::size_t i = 1; i < blocks.size(); ++i)
      if (blocks[i].offset - blocks[i - 1].offset < blocks[i - 1].length)
        throw std::runtime_error("chunks overlap");
    contents.counts = statistics->channelCounts;
    return std::move(contents);
  }

 private:
  void xAddChunk(const mcap::ChunkIndex& index) {
    if (index.offset < kMagic.size() || index.offset > footer.summaryStart ||
        index.length > footer.summaryStart - index.offset || index.length < kHeadSize)
      throw std::runtime_error("a chunk outside of the data");
    contents.blocks.push_back({true, index.offset, index.length, index.startTime, index.endTime});
  }

  const mcap::Footer footer;
  McapContents contents;
  std::optional<mcap::Statistics> statistics;
};

/** The record that all data ends with, right before the summary. */
std::optional<std::uint64_t> findDataEnd(const ByteSource& source, const mcap::Footer& footer) {
  constexpr std::uint64_t kSize = kHeadSize + sizeof(std::uint32_t);
  if (footer.summaryStart < kMagic.size() + kSize) return std::nullopt;
  std::uint8_t bytes[kHeadSize];
  source.read(footer.summaryStart - kSize, bytes);
  const auto [op, length] = mcap::parseHead(bytes);
  if (op != Op::dataEnd || length != sizeof(std::uint32_t)) return std::nullopt;
  return footer.summaryStart - kSize;
}

void checkHeads(const ByteSource& source, const std::vector<McapBlock>& blocks) {
  for (const McapBlock& block : blocks) {
    std::uint8_t bytes[kHeadSize];
    source.read(block.offset, bytes);
    const auto [op, length] = mcap::parseHead(bytes);
    if (op != Op::chunk || length != block.length - kHeadSize)
      throw std::runtime_error("no chunk where the index says");
  }
}

}  // namespace

std::optional<McapContents> readSummary(const ByteSource& source, const McapLimits& limits) {
  const mcap::Footer footer = readFooter(source);
  if (footer.summaryStart == 0) return std::nullopt;
  SummaryReader summary(footer, limits);
  walkSummary(source, footer, limits, [&](Op op, BytesView content) { summary.add(op, content); });
  McapContents contents = summary.finish();
  contents.dataEnd = findDataEnd(source, footer);
  // An index under a CRC knows better than a damaged chunk does.
  if (footer.crc == 0) checkHeads(source, contents.blocks);
  return contents;
}

}  // namespace QV::ros2
