#pragma once

#include <mutex>
#include <vector>

#include <boost/shared_ptr.hpp>
#include <boost/weak_ptr.hpp>

#include "platform/api.h"

namespace QV {

class QVBroker;

/** Knows the brokers of the process, for callers that were given none. Thread-safe. */
class QV_API QVBrokerManager {
 public:
  /** Never null, lives as long as the process. */
  static QVBrokerManager* getInstance();

  QVBrokerManager(const QVBrokerManager&) = delete;
  QVBrokerManager& operator=(const QVBrokerManager&) = delete;

  /** Returns any broker: the oldest that lives. Throws QVError if there is none. */
  boost::shared_ptr<QVBroker> getRandomBroker();

  /** A broker is forgotten as it dies. */
  void add(const boost::shared_ptr<QVBroker>& broker);

 private:
  QVBrokerManager();

  std::mutex mutex;
  std::vector<boost::weak_ptr<QVBroker>> brokers;
};

}  // namespace QV
