#include "ros2/bag/internal/mcap_contents.h"

#include <stdexcept>
#include <utility>

namespace QV::ros2 {
namespace {

std::uint64_t sizeOf(const BagTopic& topic) {
  std::uint64_t size = topic.name.size() + topic.type.size() + topic.encoding.size() +
                       topic.schemaEncoding.size() + topic.schema.size();
  for (const auto& [key, value] : topic.metadata) size += key.size() + value.size();
  return size;
}

}  // namespace

void McapContents::add(mcap::Op op, BytesView content) {
  if (op == mcap::Op::schema) addSchema(mcap::parseSchema(content));
  if (op == mcap::Op::channel) addChannel(mcap::parseChannel(content));
}

void McapContents::addSchema(mcap::Schema schema) {
  const std::uint16_t id = schema.id;
  const auto known = schemas.find(id);
  if (known == schemas.end()) {
    xClaim(schema.name.size() + schema.encoding.size() + schema.text.size());
    schemas.emplace(id, std::move(schema));
  } else if (known->second != schema) {
    throw std::runtime_error("schema " + std::to_string(id) + " is defined twice, differently");
  }
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
  const auto known = topics.find(channel.id);
  if (known == topics.end()) {
    xClaim(sizeOf(topic));
    topics.emplace(channel.id, std::move(topic));
  } else if (known->second != topic) {
    throw std::runtime_error("channel " + std::to_string(channel.id) +
                             " is defined twice, differently");
  }
}

void McapContents::checkPlaces() const {
  if (blocks.size() + metadata.size() + attachments.size() > limits.places)
    throw std::runtime_error("up to " + std::to_string(limits.places) +
                             " chunks, metadata and attachments expected, more given");
}

void McapContents::xClaim(std::uint64_t bytes) {
  if (bytes > limits.texts - texts)
    throw std::runtime_error("schemas and channels of up to " + std::to_string(limits.texts) +
                             " bytes expected, more given");
  texts += bytes;
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
