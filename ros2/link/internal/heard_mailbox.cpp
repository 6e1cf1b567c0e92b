#include "ros2/link/internal/heard_mailbox.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace QV::ros2 {

void HeardMailbox::put(const std::string& topic, const std::string& type, BytesView cdr,
                       std::size_t kept) {
  HeardMessage message{topic, type, {cdr.begin(), cdr.end()}};
  {
    const std::lock_guard lock(mutex);
    auto& messages = topics[topic];
    while (messages.size() >= kept) messages.pop_front();
    message.number = count++;
    messages.push_back(std::move(message));
    isAwake = true;
  }
  changed.notify_all();
}

std::vector<HeardMessage> HeardMailbox::take() {
  std::vector<HeardMessage> all;
  {
    const std::lock_guard lock(mutex);
    for (auto& [topic, messages] : topics)
      std::ranges::move(std::exchange(messages, {}), std::back_inserter(all));
    isAwake = false;
  }
  std::ranges::sort(all, {}, &HeardMessage::number);
  return all;
}

void HeardMailbox::discard(const std::string& topic) {
  const std::lock_guard lock(mutex);
  topics.erase(topic);
}

void HeardMailbox::wake() {
  {
    const std::lock_guard lock(mutex);
    isAwake = true;
  }
  changed.notify_all();
}

void HeardMailbox::await(std::chrono::nanoseconds most) {
  std::unique_lock lock(mutex);
  changed.wait_for(lock, most, [this] { return isAwake; });
  isAwake = false;
}

}  // namespace QV::ros2
