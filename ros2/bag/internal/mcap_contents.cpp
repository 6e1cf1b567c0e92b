#include "ros2/bag/internal/mcap_contents.h"

#include <stdexcept>

namespace QV::ros2 {

void McapContents::add(mcap::Op op, BytesView content) {
  if (op == mcap::Op::schema) addSchema(mcap::parseSchema(content));
  if (op == mcap::Op::channel) addChannel(mcap::parseChannel(content));
}

void McapContents::addSchema(mcap::Schema schema) {
  const std::uint16_t id = schema.id;
  const auto [known, isNew] = schemas.try_emplace(id, schema);
  if (!isNew && known->second != schema)
    throw std::runtime_error("schema " + std::to_string(id) + " comes again and is another");
}

void McapContents::addChannel(const mcap::Channel& channel) {
  BagTopic topic{channel.topic, "", channel.encoding, "", "", channel.metadata};
  const auto schema = schemas.find(channel.schemaId);
  if (channel.schemaId != 0) {
    if (schema == schemas.end())
      throw std::runtime_error("channel " + std::to_string(channel.id) + " has no schema " +
                               std::to_string(channel.schemaId));
    topic.type = schema->second.name;
    topic.schemaEncoding = schema->second.encoding;
    topic.schema = schema->second.text;
  }
  const auto [known, isNew] = topics.try_emplace(channel.id, topic);
  if (!isNew && known->second != topic)
    throw std::runtime_error("channel " + std::to_string(channel.id) +
                             " comes again and is another");
}

Bytes readRecord(const ByteSource& source, std::uint64_t offset, mcap::Op expected,
                 std::uint64_t mostBytes) {
  std::uint8_t head[mcap::kHeadSize];
  source.read(offset, head);
  const auto [op, length] = mcap::parseHead(head);
  if (op != expected)
    throw std::runtime_error("record " + std::to_string(static_cast<int>(expected)) +
                             " expected, record " + std::to_string(static_cast<int>(op)) +
                             " given");
  if (length > mostBytes || length > source.getSize())
    throw std::runtime_error("a record of up to " + std::to_string(mostBytes) +
                             " bytes expected, " + std::to_string(length) + " given");
  Bytes content(static_cast<std::size_t>(length));
  source.read(offset + sizeof head, content);
  return content;
}

}  // namespace QV::ros2
