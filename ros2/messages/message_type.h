#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "platform/api.h"

namespace QV::ros2 {

/** The quality of service that a topic's publisher offers, or its subscription asks for. */
struct Qos {
  bool reliable = true;
  /** True if late subscribers get the last messages. */
  bool transientLocal = false;
  /** The history depth, in messages per publisher. */
  int depth = 10;
};

using Bytes = std::vector<std::uint8_t>;
using BytesView = std::span<const std::uint8_t>;

struct MessageLayout;
struct MessageInside;

/**
 * A type of ROS 2 messages. A message's struct gives it as `getType()`. Names, schema, hash and
 * encoding are derived from the list of fields. Not copyable. Thread-safe.
 */
class QV_API MessageType {
 public:
  ~MessageType();
  MessageType(const MessageType&) = delete;
  MessageType& operator=(const MessageType&) = delete;

  /** The name in ROS: "sensor_msgs/msg/LaserScan". */
  const std::string& getName() const;
  /** The name in DDS: "sensor_msgs::msg::dds_::LaserScan_". */
  const std::string& getDdsName() const { return ddsName; }
  /** The fields as .msg text, followed by those of nested types ("ros2msg"). */
  const std::string& getSchema() const { return schema; }
  /** The type hash: "RIHS01_" and 64 hexadecimal digits. */
  const std::string& getHash() const { return hash; }

  /** Replaces `cdr` by `message` in little-endian CDR, with its 4-byte header. */
  void encode(const void* message, Bytes& cdr) const;

  /**
   * Reads CDR of either byte order; up to 3 bytes of padding may follow. Throws std::runtime_error
   * with type, field and byte for anything else; the message is then read in part.
   */
  void decode(BytesView cdr, void* message) const;

 private:
  friend struct MessageInside;
  explicit MessageType(std::unique_ptr<const MessageLayout> layout);

  std::unique_ptr<const MessageLayout> layout;
  std::string ddsName;
  std::string schema;
  std::string hash;
};

/** Returns the type with this name; null if unknown. */
QV_API const MessageType* findMessageType(const std::string& name);
/** Returns all known types, sorted by name. */
QV_API const std::vector<const MessageType*>& getMessageTypes();

template <typename Message>
Bytes toCdr(const Message& message) {
  Bytes cdr;
  Message::getType().encode(&message, cdr);
  return cdr;
}

template <typename Message>
Message fromCdr(BytesView cdr) {
  Message message;
  Message::getType().decode(cdr, &message);
  return message;
}

}  // namespace QV::ros2
