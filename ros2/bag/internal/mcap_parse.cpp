#include "ros2/bag/internal/crc32.h"
#include "ros2/bag/internal/mcap_records.h"
#include "ros2/bag/internal/record_bytes.h"

namespace QV::ros2::mcap {
namespace {

using U8 = std::uint8_t;
using U16 = std::uint16_t;
using U32 = std::uint32_t;
using U64 = std::uint64_t;

std::map<U16, U64> parseMap(RecordReader& record) {
  RecordReader entries(record.raw(record.number<U32>()));
  std::map<U16, U64> map;
  while (!entries.atEnd()) {
    const U16 key = entries.number<U16>();
    map[key] = entries.number<U64>();
  }
  return map;
}

}  // namespace

// Braces keep the order in which the members are read.

Head parseHead(BytesView bytes) {
  RecordReader record(bytes);
  return {Op{record.number<U8>()}, record.number<U64>()};
}

Schema parseSchema(BytesView content) {
  RecordReader record(content);
  Schema schema{record.number<U16>(), record.text(), record.text()};
  schema.text = record.text();
  return schema;
}

Channel parseChannel(BytesView content) {
  RecordReader record(content);
  return {record.number<U16>(), record.number<U16>(), record.text(), record.text(), record.texts()};
}

Message parseMessage(BytesView content) {
  RecordReader record(content);
  return {record.number<U16>(), record.number<U32>(), record.number<U64>(), record.number<U64>(),
          record.rest()};
}

Chunk parseChunk(BytesView content) {
  RecordReader record(content);
  return {record.number<U64>(), record.number<U64>(), record.number<U64>(),
          record.number<U32>(), record.text(),        record.raw(record.number<U64>())};
}

ChunkIndex parseChunkIndex(BytesView content) {
  RecordReader record(content);
  return {record.number<U64>(), record.number<U64>(), record.number<U64>(),
          record.number<U64>(), parseMap(record),     record.number<U64>(),
          record.text(),        record.number<U64>(), record.number<U64>()};
}

BagAttachment parseAttachment(BytesView content) {
  RecordReader record(content);
  BagAttachment attachment;
  attachment.logTime = record.number<U64>();
  attachment.createTime = record.number<U64>();
  attachment.name = record.text();
  attachment.mediaType = record.text();
  const BytesView data = record.raw(record.number<U64>());
  attachment.data.assign(data.begin(), data.end());
  const BytesView covered(content.begin(), data.end());
  const U32 crc = record.number<U32>();
  if (crc != 0 && crc != crc32(covered)) throw std::runtime_error("CRC is wrong");
  return attachment;
}

AttachmentIndex parseAttachmentIndex(BytesView content) {
  RecordReader record(content);
  return {record.number<U64>(), record.number<U64>(), record.number<U64>(), record.number<U64>(),
          record.number<U64>(), record.text(),        record.text()};
}

Statistics parseStatistics(BytesView content) {
  RecordReader record(content);
  return {record.number<U64>(), record.number<U16>(), record.number<U32>(),
          record.number<U32>(), record.number<U32>(), record.number<U32>(),
          record.number<U64>(), record.number<U64>(), parseMap(record)};
}

Metadata parseMetadata(BytesView content) {
  RecordReader record(content);
  return {record.text(), record.texts()};
}

MetadataIndex parseMetadataIndex(BytesView content) {
  RecordReader record(content);
  return {record.number<U64>(), record.number<U64>(), record.text()};
}

Footer parseFooter(BytesView content) {
  RecordReader record(content);
  return {record.number<U64>(), record.number<U64>(), record.number<U32>()};
}

}  // namespace QV::ros2::mcap
