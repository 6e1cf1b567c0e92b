#include "platform/middleware/qv_broker_manager.h"

#include "platform/middleware/qv_broker.h"
#include "platform/middleware/qv_error.h"

namespace QV {

QVBrokerManager::QVBrokerManager() = default;

QVBrokerManager* QVBrokerManager::getInstance() {
  // Never destroyed: brokers may live in statics.
  static auto* instance = new QVBrokerManager;
  return instance;
}

boost::shared_ptr<QVBroker> QVBrokerManager::getRandomBroker() {
  std::lock_guard<std::mutex> lock(mutex);
  for (const auto& broker : brokers) {
    if (auto alive = broker.lock()) return alive;
  }
  throw QVError("QVBrokerManager", "getRandomBroker", "no broker is registered");
}

void QVBrokerManager::add(const boost::shared_ptr<QVBroker>& broker) {
  std::lock_guard<std::mutex> lock(mutex);
  std::erase_if(brokers, [](const auto& known) { return known.expired(); });
  brokers.push_back(broker);
}

}  // namespace QV
