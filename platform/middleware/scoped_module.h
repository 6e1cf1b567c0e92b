#pragma once

#include <string>

#include <boost/shared_ptr.hpp>

#include "platform/api.h"
#include "platform/middleware/qv_broker.h"

namespace QV {

/**
 * A module that is registered for a scope. For modules that hold their own broker, which would
 * keep each other alive otherwise. Keeps the broker alive. Not copyable.
 */
class QV_API ScopedModule {
 public:
  /** As QVBroker::registerModule; no broker: QVError. */
  ScopedModule(boost::shared_ptr<QVBroker> broker, boost::shared_ptr<QVModule> module);
  /** Unregisters the module, unless that was done already. Calls that run go on to their end. */
  ~ScopedModule();
  ScopedModule(const ScopedModule&) = delete;
  ScopedModule& operator=(const ScopedModule&) = delete;

 private:
  boost::shared_ptr<QVBroker> broker;
  std::string name;
};

}  // namespace QV
