#pragma once

#include <boost/make_shared.hpp>

#include "platform/middleware/qv_broker.h"
#include "robot/services/memory_service.h"

namespace QV::test {

/** A broker, known to the manager, with the memory service. */
inline boost::shared_ptr<QVBroker> brokerWithMemory() {
  auto broker = QVBroker::create();
  broker->registerModule(boost::make_shared<robot::MemoryService>(broker));
  return broker;
}

}  // namespace QV::test
