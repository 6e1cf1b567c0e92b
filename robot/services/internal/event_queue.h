#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <deque>
#include <mutex>
#include <string>
#include <utility>

#include <boost/shared_ptr.hpp>
#include <boost/weak_ptr.hpp>

#include "platform/middleware/qv_broker.h"

namespace QV::robot {

/** The method that events are delivered to; its calls come one after the other. */
class EventReceiver {
 public:
  /** `message` is the method's third argument. */
  EventReceiver(boost::weak_ptr<QVBroker> broker, std::string event, std::string module,
                std::string method, std::string message);

  void deliver(QVValue value);

  /** Returns the subscriber and his event, as the start of a line. */
  std::string getText() const;

 private:
  void xCall();
  void xLogOnce(const std::string& failure);

  const boost::weak_ptr<QVBroker> broker;
  const std::string event;
  const std::string module;
  const std::string method;
  /** The event, the value that is being delivered, and the message. */
  std::array<QVValue, 3> arguments;
  std::string lastFailure;
};

/** The events that wait for one subscription; the oldest make room when there are too many. */
class EventQueue {
 public:
  /** True if one more delivery is due. */
  bool add(const boost::shared_ptr<EventReceiver>& receiver, const QVValue& value);
  void deliverNext();

 private:
  struct Delivery {
    boost::shared_ptr<EventReceiver> receiver;
    QVValue value;
  };

  Delivery xTake();
  std::size_t xTakeLost();

  std::mutex mutex;
  std::deque<Delivery> waiting;
  /** Changed under the lock. */
  std::atomic<std::size_t> dropped{0};
};

}  // namespace QV::robot
