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
  /** The last messages are kept for subscriptions that come later. */
  bool transientLocal = false;
  /** Messages that are kept, of each publisher. */
  int depth = 10;
};

using Bytes = std::vector<std::uint8_t>;
using BytesView = std::span<const std::uint8_t>;

struct MessageLayout;
struct MessageInside;

/**
 * A type of ROS 2 messages. A message's struct gives it as `getType()`; everything here follows
 * from its list of fields. Not copyable. All operations are safe from any thread.
 */
class QV_API MessageType {
 public:
  ~MessageType();
  MessageType(const MessageType&) = delete;
  MessageType& operator=(const MessageType&) = delete;

  /** "sensor_msgs/msg/LaserScan" */
  const std::string& getName() const;
  /** "sensor_msgs::msg::dds_::LaserScan_" */
  const std::string& getDdsName() const { return ddsName; }
  /** The fields as .msg text, those of each type that they need behind it ("ros2msg"). */
  const std::string& getSchema() const { return schema; }
  /** "RIHS01_" and 64 hexadecimal digits. */
  const std::string& getHash() const { return hash; }

  /** `message` as little-endian CDR with its head of 4 bytes, in place of what `cdr` held. */
  void encode(const void* message, Bytes& cdr) const;

  /**
   * Reads CDR of either byte order; up to 3 bytes of padding may follow. Anything else throws
   * std::runtime_error that names type, field and byte, and leaves the message half read.
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

/** Null for one that is not known here. */
QV_API const MessageType* findMessageType(const std::string& name);
/** All that are known here, by name. */
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
