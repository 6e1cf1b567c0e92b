#include "ros2/bag/internal/crc32.h"
#include "ros2/bag/internal/mcap_records.h"
#include "ros2/bag/internal/record_bytes.h"

namespace QV::ros2::mcap {
namespace {

/** A record in the making: its length is known at its end. */
class OpenRecord : public RecordWriter {
 public:
  OpenRecord(Bytes& bytes, Op op) : RecordWriter(bytes), bytes(bytes) {
    number(static_cast<std::uint8_t>(op));
    number(std::uint64_t{0});
    begin = bytes.size();
  }
  ~OpenRecord() {
    const std::uint64_t length = bytes.size() - begin;
    std::memcpy(bytes.data() + begin - sizeof length, &length, sizeof length);
  }
  OpenRecord(const OpenRecord&) = delete;
  OpenRecord& operator=(const OpenRecord&) = delete;

 private:
  Bytes& bytes;
  std::size_t begin;
};

template <typename Map>
void writeMap(RecordWriter& record, const Map& map) {
  Bytes entries;
  for (const auto& [key, value] : map) RecordWriter(entries).number(key).number(value);
  record.number(static_cast<std::uint32_t>(entries.size())).raw(entries);
}

}  // namespace

void appendHeader(Bytes& bytes, const std::string& profile, const std::string& library) {
  OpenRecord(bytes, Op::header).text(profile).text(library);
}

void append(Bytes& bytes, const Schema& schema) {
  OpenRecord(bytes, Op::schema)
      .number(schema.id)
      .text(schema.name)
      .text(schema.encoding)
      .text(schema.text);
}

void append(Bytes& bytes, const Channel& channel) {
  OpenRecord(bytes, Op::channel)
      .number(channel.id)
      .number(channel.schemaId)
      .text(channel.topic)
      .text(channel.encoding)
      .texts(channel.metadata);
}

void append(Bytes& bytes, const Message& message) {
  OpenRecord(bytes, Op::message)
      .number(message.channelId)
      .number(message.sequence)
      .number(message.logTime)
      .number(message.publishTime)
      .raw(message.data);
}

void appendChunkHead(Bytes& bytes, const Chunk& chunk) {
  constexpr std::size_t kNumbers = 3 * sizeof chunk.size + sizeof chunk.crc;
  const std::uint64_t packedSize = chunk.packed.size();
  RecordWriter(bytes)
      .number(static_cast<std::uint8_t>(Op::chunk))
      .number(kNumbers + sizeof(std::uint32_t) + chunk.compression.size() + sizeof packedSize +
              packedSize)
      .number(chunk.startTime)
      .number(chunk.endTime)
      .number(chunk.size)
      .number(chunk.crc)
      .text(chunk.compression)
      .number(packedSize);
}

void append(Bytes& bytes, const ChunkIndex& index) {
  OpenRecord record(bytes, Op::chunkIndex);
  record.number(index.startTime).number(index.endTime).number(index.offset).number(index.length);
  writeMap(record, index.messageIndexOffsets);
  record.number(index.messageIndexLength)
      .text(index.compression)
      .number(index.packedSize)
      .number(index.size);
}

void append(Bytes& bytes, const BagAttachment& attachment) {
  OpenRecord record(bytes, Op::attachment);
  const std::size_t begin = bytes.size();
  record.number(attachment.logTime)
      .number(attachment.createTime)
      .text(attachment.name)
      .text(attachment.mediaType)
      .number(std::uint64_t{attachment.data.size()})
      .raw(attachment.data);
  record.number(crc32(BytesView(bytes).subspan(begin)));
}

void append(Bytes& bytes, const AttachmentIndex& index) {
  OpenRecord(bytes, Op::attachmentIndex)
      .number(index.offset)
      .number(index.length)
      .number(index.logTime)
      .number(index.createTime)
      .number(index.dataSize)
      .text(index.name)
      .text(index.mediaType);
}

void append(Bytes& bytes, const Statistics& statistics) {
  OpenRecord record(bytes, Op::statistics);
  record.number(statistics.messageCount)
      .number(statistics.schemaCount)
      .number(statistics.channelCount)
      .number(statistics.attachmentCount)
      .number(statistics.metadataCount)
      .number(statistics.chunkCount)
      .number(statistics.startTime)
      .number(statistics.endTime);
  writeMap(record, statistics.channelCounts);
}

void append(Bytes& bytes, const Metadata& metadata) {
  OpenRecord(bytes, Op::metadata).text(metadata.name).texts(metadata.values);
}

void append(Bytes& bytes, const MetadataIndex& index) {
  OpenRecord(bytes, Op::metadataIndex).number(index.offset).number(index.length).text(index.name);
}

void appendDataEnd(Bytes& bytes, std::uint32_t crc) {
  OpenRecord(bytes, Op::dataEnd).number(crc);
}

void appendSummaryOffset(Bytes& bytes, Op group, std::uint64_t start, std::uint64_t length) {
  OpenRecord(bytes, Op::summaryOffset)
      .number(static_cast<std::uint8_t>(group))
      .number(start)
      .number(length);
}

void appendFooter(Bytes& bytes, const Footer& footer) {
  RecordWriter(bytes)
      .number(static_cast<std::uint8_t>(Op::footer))
      .number(std::uint64_t{kFooterSize - kHeadSize})
      .number(footer.summaryStart)
      .number(footer.summaryOffsetStart);
}

}  // namespace QV::ros2::mcap
