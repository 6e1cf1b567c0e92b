#pragma once

#include "ros2/bag/bag_reader.h"
#include "ros2/bag/internal/byte_source.h"

namespace QV::ros2 {

/** A recording of any form, as BagReader gives it. */
class BagFile {
 public:
  virtual ~BagFile() = default;

  virtual std::vector<const BagTopic*> getTopics() const = 0;
  virtual BagTimes getTimes() const = 0;
  virtual std::optional<std::uint64_t> getCount(const std::string&) const { return std::nullopt; }
  /** SQLite has no CRC. */
  virtual void checkWhole() {}
  virtual std::optional<BagMessage> next() = 0;
  virtual void seek(std::uint64_t logTime) = 0;
  virtual const std::vector<BagMetadata>& getMetadata() const = 0;
  virtual const BagDamage& getDamage() const = 0;
  /** SQLite has none, and recordings of several files have none. */
  virtual std::size_t getAttachmentCount() const { return 0; }
  virtual std::optional<BagAttachment> readAttachment(std::size_t) { return std::nullopt; }
};

/** The limits of an MCAP file's demands. */
struct McapLimits {
  /** Bytes of one chunk, packed or unpacked. */
  std::uint64_t chunk = std::uint64_t{512} << 20;
  /** The bytes of all chunks that are open at a time, but for one. */
  std::uint64_t open = std::uint64_t{512} << 20;
  /** The bytes of all channels' texts, and of all metadata. */
  std::uint64_t texts = std::uint64_t{64} << 20;
  /** Chunks, metadata and attachments: 2 TB of a recording with chunks of 256 kB. */
  std::uint64_t places = std::uint64_t{1} << 23;
};

/** Each throws std::runtime_error for a file that is none of its kind; `path` is for messages. */
QV_API std::unique_ptr<BagFile> openMcap(std::unique_ptr<ByteSource> source,
                                         const std::string& path, BagOrder order,
                                         const McapLimits& limits = {});
std::unique_ptr<BagFile> openSqlite(const std::string& path);
std::unique_ptr<BagFile> openFolder(const std::string& path, BagOrder order);
/** Opens any of them, by its content. */
std::unique_ptr<BagFile> openBag(const std::string& path, BagOrder order);

}  // namespace QV::ros2
