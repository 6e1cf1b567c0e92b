#pragma once

#include <boost/shared_ptr.hpp>

#include "platform/api.h"

namespace ko {

namespace detail {
class FutureState;
}

/** A handle to a call that will be made; only the one without a result is offered. */
template <typename T>
class Future;

/**
 * A delayed call: copies speak of the same call, and releasing them changes nothing. One made by
 * default speaks of none: it is neither finished nor cancelled. All operations are safe from any
 * thread, the call's own included.
 */
template <>
class QV_API Future<void> {
 public:
  Future() = default;
  explicit Future(boost::shared_ptr<detail::FutureState> state);

  /**
   * Never blocks: a call that has not started never starts, and what it captured is released; a
   * running call goes on. Nothing else is needed to be sure of it.
   */
  void cancel();

  /** The call has been made. One that threw (the log has its text) is finished too. */
  bool isFinished() const;

  /** The call was cancelled before it started, or the simulated time ended that it waited for. */
  bool isCanceled() const;

  /**
   * Waits until the call is finished or cancelled. The owner of a SimulatedTime advances the time
   * up to the call. Throws std::logic_error if there is no call or it is running on this thread.
   */
  void wait();

 private:
  boost::shared_ptr<detail::FutureState> state;
};

}  // namespace ko
