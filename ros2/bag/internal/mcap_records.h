#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <string>

#include "ros2/bag/bag_writer.h"

/** The records of an MCAP file. Times are nanoseconds, places count from the start of the file. */
namespace QV::ros2::mcap {

enum class Op : std::uint8_t {
  header = 1,
  footer,
  schema,
  channel,
  message,
  chunk,
  messageIndex,
  chunkIndex,
  attachment,
  attachmentIndex,
  statistics,
  metadata,
  metadataIndex,
  summaryOffset,
  dataEnd
};

constexpr std::array<std::uint8_t, 8> kMagic = {0x89, 'M', 'C', 'A', 'P', '0', '\r', '\n'};
/** The size of a record's head: operation and length. */
constexpr std::size_t kHeadSize = 9;
constexpr std::size_t kFooterSize = kHeadSize + 20;

struct Head {
  Op op;
  std::uint64_t length;
};
Head parseHead(BytesView bytes);

struct Schema {
  std::uint16_t id = 0;
  std::string name = {};
  std::string encoding = {};
  std::string text = {};
  friend bool operator==(const Schema&, const Schema&) = default;
};

struct Channel {
  std::uint16_t id = 0;
  /** The schema; 0 is none. */
  std::uint16_t schemaId = 0;
  std::string topic = {};
  std::string encoding = {};
  std::map<std::string, std::string> metadata = {};
  friend bool operator==(const Channel&, const Channel&) = default;
};

struct Message {
  std::uint16_t channelId = 0;
  std::uint32_t sequence = 0;
  std::uint64_t logTime = 0;
  std::uint64_t publishTime = 0;
  BytesView data = {};
};

struct Chunk {
  std::uint64_t startTime = 0;
  std::uint64_t endTime = 0;
  std::uint64_t size = 0;
  std::uint32_t crc = 0;
  std::string compression = {};
  /** The bytes as they stand in the file. */
  BytesView packed = {};
};

struct ChunkIndex {
  std::uint64_t startTime = 0;
  std::uint64_t endTime = 0;
  std::uint64_t offset = 0;
  /** The length with its head. */
  std::uint64_t length = 0;
  std::map<std::uint16_t, std::uint64_t> messageIndexOffsets = {};
  std::uint64_t messageIndexLength = 0;
  std::string compression = {};
  std::uint64_t packedSize = 0;
  std::uint64_t size = 0;
};

struct AttachmentIndex {
  std::uint64_t offset = 0;
  std::uint64_t length = 0;
  std::uint64_t logTime = 0;
  std::uint64_t createTime = 0;
  std::uint64_t dataSize = 0;
  std::string name = {};
  std::string mediaType = {};
};

struct Statistics {
  std::uint64_t messageCount = 0;
  std::uint16_t schemaCount = 0;
  std::uint32_t channelCount = 0;
  std::uint32_t attachmentCount = 0;
  std::uint32_t metadataCount = 0;
  std::uint32_t chunkCount = 0;
  std::uint64_t startTime = 0;
  std::uint64_t endTime = 0;
  std::map<std::uint16_t, std::uint64_t> channelCounts = {};
};

struct Metadata {
  std::string name = {};
  std::map<std::string, std::string> values = {};
};

struct MetadataIndex {
  std::uint64_t offset = 0;
  std::uint64_t length = 0;
  std::string name = {};
};

struct Footer {
  std::uint64_t summaryStart = 0;
  std::uint64_t summaryOffsetStart = 0;
  std::uint32_t crc = 0;
};

/** Each from its content; one that is too short throws std::runtime_error. */
Schema parseSchema(BytesView content);
Channel parseChannel(BytesView content);
Message parseMessage(BytesView content);
Chunk parseChunk(BytesView content);
ChunkIndex parseChunkIndex(BytesView content);
/** Parses an attachment; one whose CRC is wrong throws, too. */
BagAttachment parseAttachment(BytesView content);
AttachmentIndex parseAttachmentIndex(BytesView content);
Statistics parseStatistics(BytesView content);
Metadata parseMetadata(BytesView content);
MetadataIndex parseMetadataIndex(BytesView content);
Footer parseFooter(BytesView content);

/** Each appended whole. */
void appendHeader(Bytes& bytes, const std::string& profile, const std::string& library);
QV_API void append(Bytes& bytes, const Schema& schema);
QV_API void append(Bytes& bytes, const Channel& channel);
QV_API void append(Bytes& bytes, const Message& message);
/** All of it but for the packed records, which stand behind. */
void appendChunkHead(Bytes& bytes, const Chunk& chunk);
void append(Bytes& bytes, const ChunkIndex& index);
void append(Bytes& bytes, const BagAttachment& attachment);
void append(Bytes& bytes, const AttachmentIndex& index);
void append(Bytes& bytes, const Statistics& statistics);
QV_API void append(Bytes& bytes, const Metadata& metadata);
void append(Bytes& bytes, const MetadataIndex& index);
void appendDataEnd(Bytes& bytes, std::uint32_t crc);
void appendSummaryOffset(Bytes& bytes, Op group, std::uint64_t start, std::uint64_t length);
/** All of it but for the CRC, which covers them. */
void appendFooter(Bytes& bytes, const Footer& footer);

}  // namespace QV::ros2::mcap
