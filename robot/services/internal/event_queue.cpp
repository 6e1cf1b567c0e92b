#include "robot/services/internal/event_queue.h"

#include "platform/ko/log.h"
#include "platform/middleware/contracts/memory_contract.h"

namespace QV::robot {
namespace {

// The queue holds ten seconds of events at a hundred a second: a slower subscriber hangs.
constexpr std::size_t kMostWaiting = 1000;

}  // namespace

EventReceiver::EventReceiver(boost::weak_ptr<QVBroker> broker, std::string event,
                             std::string module, std::string method, std::string message)
    : broker(std::move(broker)),
      event(std::move(event)),
      module(std::move(module)),
      method(std::move(method)),
      arguments{this->event, QVValue(), std::move(message)} {}

void EventReceiver::deliver(QVValue value) {
  arguments[1] = std::move(value);
  try {
    xCall();
    lastFailure.clear();
  } catch (const std::exception& error) {
    xLogOnce(error.what());
  } catch (...) {
    xLogOnce("not a standard exception");
  }
  arguments[1] = QVValue();
}

std::string EventReceiver::getText() const {
  return "Event " + event + " to " + module + "." + method + ": ";
}

void EventReceiver::xCall() {
  const auto alive = broker.lock();
  // Without the broker there are no listeners left.
  if (alive) alive->call(module, method, arguments);
}

// An event may come a hundred times a second: only a change is news.
void EventReceiver::xLogOnce(const std::string& failure) {
  if (failure == lastFailure) return;
  lastFailure = failure;
  ko::log::error(MemoryContract::kModule, MemoryContract::kRaiseEvent)
      << "Event " << event << " to " << module << ": " << failure;
}

bool EventQueue::add(const boost::shared_ptr<EventReceiver>& receiver, const QVValue& value) {
  {
    std::lock_guard<std::mutex> lock(mutex);
    waiting.push_back({receiver, value});
    if (waiting.size() <= kMostWaiting) return true;
    waiting.pop_front();
    if (++dropped > 1) return false;
  }
  ko::log::error(MemoryContract::kModule, MemoryContract::kRaiseEvent)
      << receiver->getText() << kMostWaiting << " wait, the oldest are dropped until it goes on";
  return false;
}

void EventQueue::deliverNext() {
  Delivery next = xTake();
  next.receiver->deliver(std::move(next.value));
  const std::size_t lost = xTakeLost();
  if (lost == 0) return;
  ko::log::error(MemoryContract::kModule, MemoryContract::kRaiseEvent)
      << next.receiver->getText() << "goes on, " << lost << " were dropped";
}

EventQueue::Delivery EventQueue::xTake() {
  std::lock_guard<std::mutex> lock(mutex);
  Delivery next = std::move(waiting.front());
  waiting.pop_front();
  return next;
}

// The loss is reported once all is delivered: else a slow subscriber would be reported at each
// event.
std::size_t EventQueue::xTakeLost() {
  if (dropped == 0) return 0;
  std::lock_guard<std::mutex> lock(mutex);
  return waiting.empty() ? dropped.exchange(0) : 0;
}

}  // namespace QV::robot
