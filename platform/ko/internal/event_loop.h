#pragma once

#include <boost/function.hpp>

#include "platform/api.h"
#include "platform/ko/clock.h"
#include "platform/ko/internal/future.h"

namespace ko {

/**
 * Makes calls on a small thread pool, or on the owner's thread while a SimulatedTime counts. Safe
 * from any thread. What a call throws is logged at error level, category "ko.EventLoop". A call
 * that waits long keeps one of the pool's four threads from everybody else.
 */
class QV_API EventLoop {
 public:
  EventLoop(const EventLoop&) = delete;
  EventLoop& operator=(const EventLoop&) = delete;

  /** Makes `call` as soon as possible; an empty one throws std::invalid_argument. */
  void post(boost::function<void()> call);

  /**
   * Makes `call` after `delay` (at once if that is not positive) unless the future is cancelled
   * before; to let go of the future is not to cancel. An empty call throws std::invalid_argument.
   */
  Future<void> asyncDelay(boost::function<void()> call, Duration delay);

 private:
  EventLoop() = default;
  friend QV_API EventLoop& getEventLoop();
};

/** The one of the process. */
QV_API EventLoop& getEventLoop();

}  // namespace ko
