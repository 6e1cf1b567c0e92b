#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "platform/ko/clock.h"
#include "ros2/graph/graph.h"
#include "ros2/link/internal/heard_mailbox.h"

namespace QV::ros2 {

/** When it is said that nobody publishes a topic: always, only after somebody did, or never. */
enum class Absence { said, saidOfGone, unsaid };

/** The way in which a robot is heard. */
struct HeardTopicOptions {
  std::string name;
  const MessageType* type = nullptr;
  Qos qos = {false, false, 5};
  /** Messages that wait at most; the newest. */
  std::size_t kept = 1;
  Absence absence = Absence::said;
};

/** A topic that is subscribed to while somebody wants it. By one thread at a time. */
class HeardTopic {
 public:
  /** The change between two looks. */
  enum class Change { none, lost, found, notThere };

  explicit HeardTopic(HeardTopicOptions options) : options(std::move(options)) {}

  const std::string& getName() const { return options.name; }
  const MessageType& getType() const { return *options.type; }
  bool isOn() const { return subscription != nullptr; }

  /**
   * Subscribes or unsubscribes; the mailbox, which must outlive it, then has no older messages.
   * A refused subscription is logged and not retried.
   */
  void set(bool on, GraphNode& node, HeardMailbox& mailbox);
  /** Looks whether its publishers have come or gone, as far as that is said; `notThere`, once, if
   * there are none for long. */
  Change look();

 private:
  void xSubscribe(GraphNode& node, HeardMailbox& mailbox);

  const HeardTopicOptions options;
  std::unique_ptr<Subscription> subscription;
  ko::Clock::time_point since;
  bool hadWriters = false;
  bool wasMissed = false;
  bool isRefused = false;
};

}  // namespace QV::ros2
