#pragma once

#include <boost/shared_ptr.hpp>

#include "platform/api.h"

namespace ko {

namespace detail {
class FutureState;
}

/** A handle to a call that will run. Only futures without a result exist. */
template <typename T>
class Future;

/**
 * A delayed call. Copies refer to the same call, and releasing them changes nothing. A
 * default-constructed future has no call: it is neither finished nor cancelled. Thread-safe, also
 * from the call.
 */
template <>
class QV_API Future<void> {
 public:
  Future() = default;
  explicit Future(boost::shared_ptr<detail::FutureState> state);

  /**
   * Cancels the call, without blocking. A call that has not started never starts, and its captures
   * are released; a running call goes on.
   */
  void cancel();

  /** True if the call has run, also if it threw (the log has the text). */
  bool isFinished() const;

  /** True if the call was cancelled before it started, or its simulated time has ended. */
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
