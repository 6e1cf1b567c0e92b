#include "robot/services/internal/event_board.h"

#include <algorithm>
#include <utility>

#include <boost/make_shared.hpp>

namespace QV::robot {

EventBoard::EventBoard(const boost::shared_ptr<QVBroker>& broker) : broker(broker) {}

EventBoard::~EventBoard() = default;

void EventBoard::subscribe(const std::string& event, const Subscriber& subscriber) {
  auto receiver = boost::make_shared<EventReceiver>(broker, event, subscriber.module,
                                                    subscriber.method, subscriber.message);
  std::lock_guard<std::mutex> lock(mutex);
  Subscriptions& subscriptions = subscriptionsOf[event];
  const auto found = xFind(subscriptions, subscriber.kind, subscriber.module);
  if (found != subscriptions.end()) {
    found->receiver = std::move(receiver);
  } else {
    subscriptions.push_back({subscriber.kind, subscriber.module, std::move(receiver),
                             boost::make_shared<EventQueue>(), boost::make_shared<ko::Strand>()});
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
