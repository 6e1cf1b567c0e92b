#pragma once

#include <atomic>
#include <exception>
#include <memory>
#include <mutex>
#include <string>
#include <utility>

#include "platform/ko/log.h"
#include "ros2/graph/graph.h"

namespace QV::ros2 {

/** A topic that asks something of a robot: the last message counts. Thread-safe. */
template <typename Message>
class GraphInput {
 public:
  GraphInput(GraphNode& node, const std::string& topic, const Qos& qos)
      : subscription(node.subscribe(topic, Message::getType(), qos,
                                    [this](const ReceivedMessage& message) { xKeep(message); })) {}
  // The subscription ends before the members that it writes to.
  ~GraphInput() { subscription.reset(); }

  const GraphTopic& getTopic() const { return subscription->getTopic(); }

  /** Acts on the last message that was not taken yet, and judges it by that. */
  template <typename Act>
  void take(const Act& act) {
    if (!isNew) return;
    const Bytes cdr = xTake();
    judge([&] { return act(fromCdr<Message>(cdr)); });
  }
  /** The message is obeyed if `act` returns true and refused if it throws; false leaves it open.
   * Logs the first one that is refused, and the first one obeyed after it. */
  template <typename Act>
  void judge(const Act& act) {
    try {
      if (act() && std::exchange(isRefused, false))
        ko::log::info("ROS2.Robot", "obey") << getTopic().name << ": taken again";
    } catch (const std::exception& error) {
      if (std::exchange(isRefused, true)) return;
      ko::log::warning("ROS2.Robot", "obey") << getTopic().name << ": " << error.what();
    }
  }

 private:
  void xKeep(const ReceivedMessage& message) {
    const std::lock_guard lock(mutex);
    last.assign(message.cdr.begin(), message.cdr.end());
    isNew = true;
  }
  Bytes xTake() {
    const std::lock_guard lock(mutex);
    isNew = false;
    return std::exchange(last, {});
  }

  std::mutex mutex;
  Bytes last;
  std::atomic<bool> isNew{false};
  bool isRefused = false;
  std::unique_ptr<Subscription> subscription;
};

}  // namespace QV::ros2
