#pragma once

namespace QV::ros2 {

/** What a topic's publisher offers, or its subscription asks for. */
struct Qos {
  bool reliable = true;
  /** The last messages are kept for subscriptions that come later. */
  bool transientLocal = false;
  /** Messages that are kept, of each publisher. */
  int depth = 10;
};

}  // namespace QV::ros2
