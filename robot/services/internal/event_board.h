#pragma once

#include <map>
#include <mutex>
#include <string>
#include <vector>

#include <boost/shared_ptr.hpp>
#include <boost/weak_ptr.hpp>

#include "platform/api.h"
#include "platform/ko/internal/strand.h"
#include "platform/middleware/qv_broker.h"
#include "robot/services/internal/event_queue.h"

namespace QV::robot {

/**
 * The subscribers of events. A subscription gets its events in the order they were raised, one at a
 * time, on the event loop's threads; different subscriptions run side by side. Once 1000 events
 * wait for a subscriber, newer ones take the place of the oldest. A line names it at the first that
 * is lost, and another counts them when it has caught up. Not copyable; thread-safe.
 */
class QV_API EventBoard {
 public:
  /** A module may hold one subscription of each kind to an event. */
  enum class Kind { event, microEvent };

  struct Subscriber {
    Kind kind;
    std::string module;
    std::string method;
    /** The third argument of the method. */
    std::string message;
  };

  explicit EventBoard(const boost::shared_ptr<QVBroker>& broker);
  /** Drops what was not delivered, and waits for what is being delivered. */
  ~EventBoard();
  EventBoard(const EventBoard&) = delete;
  EventBoard& operator=(const EventBoard&) = delete;

  /** Takes the place of the module's subscription, which still gets what was raised before. */
  void subscribe(const std::string& event, const Subscriber& subscriber);

  /**
   * Drops what was not delivered, and waits for what is being delivered unless called from there.
   * False if there was no such subscription.
   */
  bool unsubscribe(const std::string& event, Kind kind, const std::string& module);

  void raise(const std::string& event, const QVValue& value);

  bool hasSubscribers(const std::string& event) const;

 private:
  struct Subscription {
    Kind kind;
    std::string module;
    boost::shared_ptr<EventReceiver> receiver;
    boost::shared_ptr<EventQueue> queue;
    boost::shared_ptr<ko::Strand> strand;
  };
  using Subscriptions = std::vector<Subscription>;

  static Subscriptions::iterator xFind(Subscriptions& subscriptions, Kind kind,
                                       const std::string& module);

  const boost::weak_ptr<QVBroker> broker;
  mutable std::mutex mutex;
  std::map<std::string, Subscriptions> subscriptionsOf;
};

}  // namespace QV::robot
