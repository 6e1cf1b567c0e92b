#pragma once

#include <cstdint>
#include <string>

#include "ros2/messages/message_type.h"

namespace QV::ros2 {

/** The quality of what is published once: the last message is kept for later readers. */
inline constexpr Qos kLatched{true, true, 1};

/** A topic of a session. */
struct SessionTopic {
  /** "/FrontLaser/scan" */
  std::string name;
  const MessageType* type;
  Qos qos = {};
  /** The sensor whose measurements it carries; empty if it belongs to no sensor. */
  std::string sensor = {};
};

/** The sink for the messages of a session: a recording or a graph. Used by one thread at a time. */
class QV_API MessageSink {
 public:
  MessageSink() = default;
  virtual ~MessageSink() = default;
  MessageSink(const MessageSink&) = delete;
  MessageSink& operator=(const MessageSink&) = delete;

  /** Gives its number. */
  virtual std::uint16_t addTopic(const SessionTopic& topic) = 0;
  template <typename Message>
  std::uint16_t add(const std::string& name, const Qos& qos = {}, const std::string& sensor = {}) {
    return addTopic({name, &Message::getType(), qos, sensor});
  }

  /** True if somebody reads the next message; if false, it need not be made. */
  virtual bool isRead(std::uint16_t) const { return true; }
  /** `time` in nanoseconds, as logTimeOf gives it. */
  template <typename Message>
  void write(std::uint16_t topic, std::uint64_t time, const Message& message) {
    xWrite(topic, time, Message::getType(), &message);
  }

 private:
  virtual void xWrite(std::uint16_t topic, std::uint64_t time, const MessageType& type,
                      const void* message) = 0;
};

}  // namespace QV::ros2
