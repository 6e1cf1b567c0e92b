#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <map>
#include <mutex>
#include <string>
#include <vector>

#include "ros2/messages/message_type.h"

namespace QV::ros2 {

struct HeardMessage {
  std::string topic;
  std::string type;
  Bytes cdr;
  /** The place in the order in which they came, over all topics. */
  std::uint64_t number = 0;
};

/**
 * A mailbox from the engine's threads to whoever takes the messages. The newest ones of each topic
 * are kept. Thread-safe.
 */
class HeardMailbox {
 public:
  /** Puts a message, with the `kept` - 1 before it; older ones go. */
  void put(const std::string& topic, const std::string& type, BytesView cdr, std::size_t kept);
  /** All that there are, in the order in which they came. */
  std::vector<HeardMessage> take();
  /** Discards what has come of a topic that nobody wants any more. */
  void discard(const std::string& topic);

  /** Ends the wait. */
  void wake();
  /** Waits until something has come, or somebody has woken it; not longer than that. */
  void await(std::chrono::nanoseconds most);

 private:
  std::mutex mutex;
  std::condition_variable changed;
  std::map<std::string, std::deque<HeardMessage>> topics;
  std::uint64_t count = 0;
  bool isAwake = false;
};

}  // namespace QV::ros2
