#include "platform/ko/internal/event_loop.h"

#include <stdexcept>

#include "platform/ko/internal/future_state.h"

namespace ko {
namespace {

void checkCall(const boost::function<void()>& call) {
  if (!call) throw std::invalid_argument("EventLoop: there is no function to call");
}

}  // namespace

void EventLoop::post(boost::function<void()> call) {
  checkCall(call);
  detail::currentScheduler()->post(
      [call = std::move(call)] { detail::callGuarded(call, "ko.EventLoop", "post"); });
}

Future<void> EventLoop::asyncDelay(boost::function<void()> call, Duration delay) {
  checkCall(call);
  return Future<void>(detail::FutureState::start(std::move(call), delay));
}

EventLoop& getEventLoop() {
  static EventLoop instance;
  return instance;
}

}  // namespace ko
