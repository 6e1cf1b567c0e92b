#include "robot/services/internal/event_board.h"

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <deque>
#include <utility>

#include "platform/ko/log.h"
#include "platform/middleware/contracts/memory_contract.h"
#include "platform/middleware/qv_error.h"

namespace QV::robot {
namespace {

// Ten seconds of events at a hundred a second: who has not come back by then hangs.
constexpr std::size_t kMostWaiting = 1000;

}  // namespace

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

  /** Returns the subscriber and his event, as the start of a line. */
  std::string getText() const {
    return "Event " + event + " to " + subscriber.module + "." + subscriber.method + ": ";
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

/** The events that wait for one subscription; the oldest make room when there are too many. */
class EventBoard::Queue {
 public:
  /** True if one more delivery is due. */
  bool add(const boost::shared_ptr<Receiver>& receiver, const QVValue& value) {
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

  void deliverNext() {
    const Delivery next = xTake();
    next.receiver->deliver(next.value);
    const std::size_t lost = xTakeLost();
    if (lost == 0) return;
    ko::log::error(MemoryContract::kModule, MemoryContract::kRaiseEvent)
        << next.receiver->getText() << "goes on, " << lost << " were dropped";
  }

 private:
  struct Delivery {
    boost::shared_ptr<Receiver> receiver;
    QVValue value;
  };

  Delivery xTake() {
    std::lock_guard<std::mutex> lock(mutex);
    Delivery next = std::move(waiting.front());
    waiting.pop_front();
    return next;
  }

  // Only once all is delivered: one that is merely slow would be told of at each event.
  std::size_t xTakeLost() {
    if (dropped == 0) return 0;
    std::lock_guard<std::mutex> lock(mutex);
    return waiting.empty() ? dropped.exchange(0) : 0;
  }

  std::mutex mutex;
  std::deque<Delivery> waiting;
  /** Changed with the lock. */
  std::atomic<std::size_t> dropped{0};
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
                             boost::make_shared<Queue>(), boost::make_shared<ko::Strand>()});
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
    if (!subscription.queue->add(subscription.receiver, value)) continue;
    subscription.strand->post([queue = subscription.queue] { queue->deliverNext(); });
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
