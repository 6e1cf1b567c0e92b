#pragma once

#include <boost/make_shared.hpp>

#include "platform/middleware/qv_broker.h"
#include "robot/services/internal/memory_service.h"

namespace QV::test {

/** A broker, known to the manager, with the memory service. */
template <typename T = QVBroker>
boost::shared_ptr<T> brokerWithMemory() {
  auto broker = QVBroker::create<T>();
  broker->registerModule(boost::make_shared<robot::MemoryService>(broker));
  return broker;
}

}  // namespace QV::test
