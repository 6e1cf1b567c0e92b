#include <algorithm>
#include <cstring>
#include <queue>
#include <stdexcept>

#include "ros2/bag/internal/loaded_block.h"
#include "ros2/bag/internal/mcap_contents.h"

namespace QV::ros2 {
namespace {

constexpr std::uint64_t kMostDataEnd = 1024;

/** Merges the messages of blocks whose times may overlap; no more are in memory than it takes. */
class McapFile : public BagFile {
 public:
  McapFile(std::unique_ptr<ByteSource> source, const std::string& path, BagOrder order,
           const McapLimits& limits)
      : source(std::move(source)), order(order), limits(limits), damage(path) {
    xExpectMagic(path);
    xReadContents();
    xReadMetadata();
  }

  std::vector<const BagTopic*> getTopics() const override {
    std::vector<const BagTopic*> topics;
    topics.reserve(contents.topics.size());
    for (const auto& [id, topic] : contents.topics) topics.push_back(&topic);
    return topics;
  }
  const std::vector<BagMetadata>& getMetadata() const override { return metadata; }
  const BagDamage& getDamage() const override { return damage.get(); }

  void checkWhole() override {
    if (!contents.dataEnd) return;
    try {
      xCheckDataCrc();
    } catch (const std::runtime_error& error) {
      damage.add(*contents.dataEnd, std::string("the CRC of all before: ") + error.what());
    }
  }

  BagTimes getTimes() const override {
    BagTimes times;
    for (const McapBlock& block : contents.blocks) {
      const bool isFirst = &block == &contents.blocks.front();
      times.start = isFirst ? block.startTime : std::min(times.start, block.startTime);
      times.end = std::max(times.end, block.endTime);
    }
    return times;
  }

  std::optional<std::uint64_t> getCount(const std::string& name) const override {
    if (!contents.counts) return std::nullopt;
    std::uint64_t count = 0;
    for (const auto& [channel, messages] : *contents.counts) {
      const auto topic = contents.topics.find(channel);
      if (topic != contents.topics.end() && topic->second.name == name) count += messages;
    }
    return count;
  }

  std::size_t getAttachmentCount() const override { return contents.attachments.size(); }

  std::optional<BagAttachment> readAttachment(std::size_t index) override {
    const std::uint64_t place = contents.attachments.at(index);
    try {
      return mcap::parseAttachment(readRecord(*source, place, mcap::Op::attachment, limits.chunk));
    } catch (const std::runtime_error& error) {
      damage.add(place, std::string("attachment skipped: ") + error.what());
      return std::nullopt;
    }
  }

  std::optional<BagMessage> next() override {
    xOpenDue();
    while (!waiting.empty()) {
      const std::size_t index = waiting.top().index;
      waiting.pop();
      if (const auto message = xTake(index)) return message;
      xOpenDue();
    }
    return std::nullopt;
  }

  void seek(std::uint64_t logTime) override {
    waiting = {};
    open.clear();
    memory = 0;
    following = 0;
    from = logTime;
  }

 private:
  struct Open {
    LoadedBlock loaded;
    std::size_t next = 0;
  };
  struct Waiting {
    std::uint64_t time;
    std::size_t index;
    bool operator<(const Waiting& other) const {
      return std::pair(time, index) > std::pair(other.time, other.index);
    }
  };

  void xCheckDataCrc() {
    const Bytes content = readRecord(*source, *contents.dataEnd, mcap::Op::dataEnd, kMostDataEnd);
    std::uint32_t expected = 0;
    if (content.size() < sizeof expected) return;
    std::memcpy(&expected, content.data(), sizeof expected);
    if (expected != 0 && crc32Between(*source, 0, *contents.dataEnd) != expected)
      damage.add(*contents.dataEnd, "the CRC of the data section is wrong");
  }

  void xExpectMagic(const std::string& path) const {
    std::array<std::uint8_t, mcap::kMagic.size()> magic{};
    if (source->getSize() >= magic.size()) source->read(0, magic);
    if (magic != mcap::kMagic)
      throw std::runtime_error(
          path +
          ": byte 0: a recording (.mcap, .db3 or a rosbag2 folder) expected, other bytes given");
  }

  void xReadContents() {
    std::optional<McapContents> summary;
    try {
      summary = readSummary(*source, limits);
    } catch (const std::runtime_error& error) {
      damage.add(source->getSize(), std::string("read without its index: ") + error.what());
    }
    contents = summary ? std::move(*summary) : scan(*source, limits, damage);
    if (order == BagOrder::file) return;
    std::stable_sort(contents.blocks.begin(), contents.blocks.end(),
                     [](const auto& a, const auto& b) { return a.startTime < b.startTime; });
  }

  void xReadMetadata() {
    std::uint64_t left = limits.texts;
    for (const std::uint64_t place : contents.metadata) {
      try {
        const Bytes content = readRecord(*source, place, mcap::Op::metadata, left);
        left -= content.size();
        mcap::Metadata record = mcap::parseMetadata(content);
        metadata.push_back({std::move(record.name), std::move(record.values)});
      } catch (const std::runtime_error& error) {
        damage.add(place, std::string("metadata skipped: ") + error.what());
      }
    }
  }

  /** Opens all blocks that may hold the next message. */
  void xOpenDue() {
    const auto& blocks = contents.blocks;
    while (following < blocks.size() &&
           (waiting.empty() ||
            (order == BagOrder::time && blocks[following].startTime <= waiting.top().time)))
      xOpen(following++);
  }

  void xOpen(std::size_t index) {
    if (contents.blocks[index].endTime < from || !xLoad(index)) return;
    Open& block = open[index];
    const auto& entries = block.loaded.entries;
    if (order == BagOrder::time) {
      const auto first = std::lower_bound(
          entries.begin(), entries.end(), from,
          [](const auto& entry, std::uint64_t time) { return entry.logTime < time; });
      block.next = static_cast<std::size_t>(first - entries.begin());
    }
    xAwait(index, block);
  }

  /** Waits until its next message is due; or forgets it. */
  void xAwait(std::size_t index, const Open& block) {
    const auto& entries = block.loaded.entries;
    if (block.next < entries.size()) return waiting.push({entries[block.next].logTime, index});
    // The message that is given out lies in it.
    spent = block.loaded.records;
    memory -= block.loaded.memory;
    open.erase(index);
  }

  bool xLoad(std::size_t index) {
    const McapBlock& block = contents.blocks[index];
    try {
      LoadedBlock loaded = loadBlock(*source, block, limits, contents, damage);
      const auto earlier = [](const auto& a, const auto& b) { return a.logTime < b.logTime; };
      auto& entries = loaded.entries;
      if (order == BagOrder::time && !std::is_sorted(entries.begin(), entries.end(), earlier))
        std::stable_sort(entries.begin(), entries.end(), earlier);
      memory += loaded.memory;
      open[index].loaded = std::move(loaded);
      xMakeRoom(index);
      return true;
    } catch (const std::runtime_error& error) {
      damage.addChunk(block.offset, error.what());
      return false;
    }
  }

  /** Blocks that wait the longest are loaded again when they are due. */
  void xMakeRoom(std::size_t kept) {
    for (auto it = open.rbegin(); it != open.rend() && memory > limits.open; ++it) {
      if (it->first == kept || !it->second.loaded.records) continue;
      memory -= it->second.loaded.memory;
      it->second.loaded = {};
    }
  }

  std::optional<BagMessage> xTake(std::size_t index) {
    Open& block = open[index];
    if (!block.loaded.records && !xLoad(index)) {
      open.erase(index);
      return std::nullopt;
    }
    const LoadedBlock::Entry entry = block.loaded.entries[block.next++];
    xAwait(index, block);
    return BagMessage{entry.topic, entry.logTime, entry.publishTime, entry.data};
  }

  const std::unique_ptr<ByteSource> source;
  const BagOrder order;
  const McapLimits limits;
  DamageLog damage;
  McapContents contents;
  std::vector<BagMetadata> metadata;
  std::uint64_t from = 0;
  /** The first block that has not been opened. */
  std::size_t following = 0;
  std::map<std::size_t, Open> open;
  std::size_t memory = 0;
  std::priority_queue<Waiting> waiting;
  std::shared_ptr<const std::uint8_t[]> spent;
};

}  // namespace

std::unique_ptr<BagFile> openMcap(std::unique_ptr<ByteSource> source, const std::string& path,
                                  BagOrder order, const McapLimits& limits) {
  return std::make_unique<McapFile>(std::move(source), path, order, limits);
}

}  // namespace QV::ros2
