#include "robot/services/internal/event_board.h"

#include <algorithm>

#include "platform/ko/log.h"
#include "platform/middleware/contracts/memory_contract.h"
#include "platform/middleware/qv_error.h"

namespace QV::robot {

/** The method that events are delivered to; its calls come one after the other. */
class EventBoard::Receiver {
 public:
  Receiver(boost::weak_ptr<QVBroker> broker, const std::string& event, const Subscriber& subscriber)
      : broker(std::move(broker)), event(event), subscriber(subscriber) {}

  void deliver(const QVValue& value) {
    try {
      xCall(value);
      lastFailure.clear();
    } catch (const std::exception& error) {
      xLogOnce(error.what());
    } catch (...) {
      xLogOnce("not a standard exception");
    }
  }

 private:
  void xCall(const QVValue& value) {
    const auto alive = broker.lock();
    // With the broker, everybody who could have listened is gone.
    if (!alive) return;
    const QVValue arguments[] = {event, value, subscriber.message};
    alive->call(subscriber.module, subscriber.method, arguments);
  }

  // An event may come a hundred times a second: only a change is news.
  void xLogOnce(const std::string& failure) {
    if (failure == lastFailure) return;
    lastFailure = failure;
    ko::log::error(MemoryContract::kModule, MemoryContract::kRaiseEvent)
        << "Event " << event << " to " << subscriber.module << ": " << failure;
  }

  const boost::weak_ptr<QVBroker> broker;
  const std::string event;
  const Subscriber subscriber;
  std::string lastFailure;
};

EventBoard::EventBoard(const boost::shared_ptr<QVBroker>& broker) : broker(broker) {}

EventBoard::~EventBoard() = default;

void EventBoard::subscribe(const std::string& event, const Subscriber& subscriber) {
  auto receiver = boost::make_shared<Receiver>(broker, event, subscriber);
  std::lock_guard<std::mutex> lock(mutex);
  Subscriptions& subscriptions = subscriptionsOf[event];
  const auto found = xFind(subscriptions, subscriber.kind, subscriber.module);
  if (found != subscriptions.end()) {
    found->receiver = std::move(receiver);
  } else {
    subscriptions.push_back({subscriber.kind, subscriber.module, std::move(receiver),
                             boost::make_shared<ko::Strand>()});
  }
}

bool EventBoard::unsubscribe(const std::string& event, Kind kind, const std::string& module) {
  boost::shared_ptr<ko::Strand> strand;
  {
    std::lock_guard<std::mutex> lock(mutex);
    const auto subscriptions = subscriptionsOf.find(event);
    if (subscriptions == subscriptionsOf.end()) return false;
    const auto found = xFind(subscriptions->second, kind, module);
    if (found == subscriptions->second.end()) return false;
    strand = std::move(found->strand);
    subscriptions->second.erase(found);
  }
  strand->stop();
  return true;
}

void EventBoard::raise(const std::string& event, const QVValue& value) {
  std::lock_guard<std::mutex> lock(mutex);
  const auto found = subscriptionsOf.find(event);
  if (found == subscriptionsOf.end()) return;
  for (const Subscription& subscription : found->second) {
    subscription.strand->post(
        [receiver = subscription.receiver, value] { receiver->deliver(value); });
  }
}

bool EventBoard::hasSubscribers(const std::string& event) const {
  std::lock_guard<std::mutex> lock(mutex);
  const auto found = subscriptionsOf.find(event);
  return found != subscriptionsOf.end() && !found->second.empty();
}

EventBoard::Subscriptions::iterator EventBoard::xFind(Subscriptions& subscriptions, Kind kind,
                                                      const std::string& module) {
  return std::find_if(subscriptions.begin(), subscriptions.end(),
                      [&](const Subscription& s) { return s.kind == kind && s.module == module; });
}

}  // namespace QV::robot
