#pragma once

#include <map>
#include <memory>
#include <optional>
#include <vector>

#include "ros2/bag/internal/bag_file.h"
#include "ros2/bag/internal/damage_log.h"
#include "ros2/bag/internal/mcap_records.h"

namespace QV::ros2 {

/** A chunk, or a run of messages that stand outside of chunks. */
struct McapBlock {
  bool isChunk = true;
  std::uint64_t offset = 0;
  /** The length with all heads. */
  std::uint64_t length = 0;
  /** Log times of its messages. */
  std::uint64_t startTime = 0;
  std::uint64_t endTime = 0;
};

/** The contents of a file, with their places. Throws std::runtime_error above `limits`. */
class McapContents {
 public:
  explicit McapContents(const McapLimits& limits = {}) : limits(limits) {}

  std::vector<McapBlock> blocks;
  /** The places of their records. */
  std::vector<std::uint64_t> metadata;
  std::vector<std::uint64_t> attachments;
  /** The place of the record behind all data; std::nullopt if the file is cut. */
  std::optional<std::uint64_t> dataEnd;
  /** The topics by channel. */
  std::map<std::uint16_t, BagTopic> topics;
  /** The number of messages of each channel; std::nullopt without an index. */
  std::optional<std::map<std::uint16_t, std::uint64_t>> counts;

  /** Throws std::runtime_error for a schema or channel that contradicts a known one. */
  void add(mcap::Op op, BytesView content);
  void addSchema(mcap::Schema schema);
  void addChannel(const mcap::Channel& channel);
  /** Checks that there are not too many blocks, metadata and attachments. */
  void checkPlaces() const;

 private:
  void xClaim(std::uint64_t bytes);

  McapLimits limits;
  std::uint64_t texts = 0;
  std::map<std::uint16_t, mcap::Schema> schemas;
};

/** Returns the content of a record without its head. Throws std::runtime_error for another or a
 * longer record. */
Bytes readRecord(const ByteSource& source, std::uint64_t offset, mcap::Op expected,
                 std::uint64_t mostBytes);

/**
 * Reads the summary at the file's end; std::nullopt without one. Throws std::runtime_error with the
 * reason for an invalid one.
 */
std::optional<McapContents> readSummary(const ByteSource& source, const McapLimits& limits);

/** Scans the file from its start to its end or to where it is cut. */
McapContents scan(const ByteSource& source, const McapLimits& limits, DamageLog& damage);

}  // namespace QV::ros2
