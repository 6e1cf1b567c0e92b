#include "platform/ko/internal/future.h"

#include <stdexcept>

#include "platform/ko/internal/future_state.h"

namespace ko {

Future<void>::Future(boost::shared_ptr<detail::FutureState> state) : state(std::move(state)) {}

void Future<void>::cancel() {
  if (state) state->cancel();
}

bool Future<void>::isFinished() const {
  return state && state->isFinished();
}

bool Future<void>::isCanceled() const {
  return state && state->isCanceled();
}

void Future<void>::wait() {
  if (!state) throw std::logic_error("Future: there is no call to wait for");
  // A call that runs meanwhile may let this future go.
  const auto kept = state;
  kept->wait();
}

}  // namespace ko
