#pragma once

#include <boost/function.hpp>

#include "platform/api.h"
#include "platform/ko/clock.h"
#include "platform/ko/internal/future.h"

namespace ko {

/**
 * Runs calls on a small thread pool, or on the owner's thread while a SimulatedTime exists.
 * Thread-safe. An exception is logged as an error of "ko.EventLoop". A call that blocks keeps one
 * of the pool's four threads busy.
 */
class QV_API EventLoop {
 public:
  EventLoop(const EventLoop&) = delete;
  EventLoop& operator=(const EventLoop&) = delete;

  /** Runs `call` as soon as possible. Throws std::invalid_argument for an empty one. */
  void post(boost::function<void()> call);

  /**
   * Runs `call` after `delay` (at once if it is 0 or less), unless the future is cancelled before.
   * Releasing the future does not cancel the call. Throws std::invalid_argument for an empty call.
   */
  Future<void> asyncDelay(boost::function<void()> call, Duration delay);

 private:
  EventLoop() = default;
  friend QV_API EventLoop& getEventLoop();
};

/** Returns the event loop of the process. */
QV_API EventLoop& getEventLoop();

}  // namespace ko
