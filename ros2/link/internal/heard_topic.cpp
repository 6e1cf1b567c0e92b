#include "ros2/link/internal/heard_topic.h"

#include <exception>
#include <utility>

#include "platform/ko/log.h"

namespace QV::ros2 {
namespace {

constexpr ko::Duration kPatience{2'000'000'000};

}  // namespace

void HeardTopic::set(bool on, GraphNode& node, HeardMailbox& mailbox) {
  if (on == isOn() || isRefused) return;
  subscription.reset();
  mailbox.discard(options.name);
  if (!on) return;
  since = ko::Clock::now();
  hadWriters = wasMissed = false;
  try {
    xSubscribe(node, mailbox);
  } catch (const std::exception& error) {
    isRefused = true;
    ko::log::error("ROS2", "subscribe") << options.name << ": " << error.what();
  }
}

void HeardTopic::xSubscribe(GraphNode& node, HeardMailbox& mailbox) {
  subscription = node.subscribe(
      options.name, *options.type, options.qos,
      [&mailbox, name = options.name, type = options.type->getName(), kept = options.kept](
          const ReceivedMessage& message) { mailbox.put(name, type, message.cdr, kept); });
}

HeardTopic::Change HeardTopic::look() {
  if (!subscription || options.absence == Absence::unsaid) return Change::none;
  const bool hasWriters = subscription->getWriterCount() > 0;
  const bool had = std::exchange(hadWriters, hasWriters);
  if (had && !hasWriters) {
    wasMissed = true;
    return Change::lost;
  }
  if (hasWriters && std::exchange(wasMissed, false)) return Change::found;
  if (hasWriters || wasMissed || options.absence != Absence::said) return Change::none;
  if (ko::Clock::now() - since < kPatience) return Change::none;
  wasMissed = true;
  return Change::notThere;
}

}  // namespace QV::ros2
