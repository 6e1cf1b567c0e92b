#include "platform/middleware/scoped_module.h"

#include <utility>

#include "platform/middleware/qv_error.h"

namespace QV {

ScopedModule::ScopedModule(boost::shared_ptr<QVBroker> owner, boost::shared_ptr<QVModule> module)
    : broker(std::move(owner)), name(module ? module->getName() : "") {
  if (!broker)
    throw QVError("ScopedModule", "ScopedModule", "no broker given for \"" + name + "\"");
  broker->registerModule(std::move(module));
}

ScopedModule::~ScopedModule() {
  try {
    broker->unregisterModule(name);
  } catch (const QVError&) {
    // Somebody else has done it.
  }
}

}  // namespace QV
