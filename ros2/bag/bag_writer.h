#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>

#include "ros2/messages/message_type.h"

namespace QV::ros2 {

enum class Compression { none, lz4, zstd };

struct BagOptions {
  Compression compression = Compression::zstd;
  /** A chunk goes to the file when it has so many bytes, or messages of so many nanoseconds. */
  std::size_t chunkSize = std::size_t{256} << 10;
  std::uint64_t chunkTime = 1'000'000'000;
};

/** A topic as a recording knows it. */
struct QV_API BagTopic {
  std::string name;
  /** The type: "sensor_msgs/msg/LaserScan". */
  std::string type;
  /** The encoding of the messages: "cdr". */
  std::string encoding;
  /** "ros2msg", or another; empty without a schema. */
  std::string schemaEncoding;
  std::string schema;
  /** "offered_qos_profiles", "topic_type_hash". */
  std::map<std::string, std::string> metadata;

  friend bool operator==(const BagTopic&, const BagTopic&) = default;
};

/** A file inside a recording. Times in nanoseconds, 0 if not known. */
struct BagAttachment {
  std::string name;
  std::string mediaType;
  std::uint64_t logTime = 0;
  std::uint64_t createTime = 0;
  Bytes data;
};

/** Returns a topic of messages of `type`, in CDR. */
QV_API BagTopic makeBagTopic(const std::string& name, const MessageType& type, const Qos& qos = {});

/**
 * Records messages to an MCAP file that rosbag2 plays. The same calls give the same bytes. The file
 * is readable at any moment. The first call that can't write throws std::runtime_error; later calls
 * write nothing and don't throw. Times are nanoseconds, in any order. Use it on one thread at a
 * time. Not copyable.
 */
class QV_API BagWriter {
 public:
  /** Opens a file; "-" is standard output. Throws std::runtime_error if it can't be created. */
  explicit BagWriter(const std::string& path, const BagOptions& options = {});
  /** Closes; an error is logged. */
  ~BagWriter();
  BagWriter(const BagWriter&) = delete;
  BagWriter& operator=(const BagWriter&) = delete;

  /** Returns the topic's number for write(). Throws std::length_error above 65,535 topics. */
  std::uint16_t addTopic(const BagTopic& topic);

  /** Writes a message; `data` is in the topic's encoding. Throws std::out_of_range for an unknown
   * topic number. */
  void write(std::uint16_t topic, std::uint64_t logTime, std::uint64_t publishTime, BytesView data);
  template <typename Message>
  void write(std::uint16_t topic, std::uint64_t time, const Message& message) {
    Message::getType().encode(&message, cdr);
    write(topic, time, time, cdr);
  }

  void addMetadata(const std::string& name, const std::map<std::string, std::string>& values);
  void addAttachment(const BagAttachment& attachment);

  /** Writes everything so far to the file. */
  void flush();
  /** Completes and closes the file. */
  void close();

  /** Returns the size of the file, in bytes. */
  std::uint64_t getSize() const { return size; }

 private:
  class Impl;

  template <typename Call>
  void xAttempt(const Call& call);

  std::unique_ptr<Impl> impl;
  std::uint16_t topicCount = 0;
  std::uint64_t size = 0;
  Bytes cdr;
};

}  // namespace QV::ros2
