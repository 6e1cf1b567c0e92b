#include "platform/middleware/qv_broker.h"

#include <mutex>
#include <utility>

#include "platform/middleware/qv_error.h"
#include "platform/middleware/qv_proxy.h"

namespace QV {

QVBroker::QVBroker() = default;

QVBroker::~QVBroker() = default;

void QVBroker::registerModule(boost::shared_ptr<QVModule> module) {
  if (!module) throw QVError("QVBroker", "registerModule", "no module given");
  const std::string& name = module->getName();
  std::lock_guard<std::shared_mutex> lock(mutex);
  if (modules.count(name) > 0) {
    throw QVError("QVBroker", "registerModule", "module \"" + name + "\" is registered already");
  }
  module->registered = true;
  modules.emplace(name, std::move(module));
}

void QVBroker::unregisterModule(const std::string& name) {
  std::unique_lock<std::shared_mutex> lock(mutex);
  const auto removed = modules.extract(name);
  // The removed module may be destroyed here, and its destructor may call others, so the lock is
  // released first.
  lock.unlock();
  if (removed.empty()) {
    throw QVError("QVBroker", "unregisterModule", "no module \"" + name + "\"");
  }
}

void QVBroker::xRemove(const QVModule& module) {
  std::unique_lock<std::shared_mutex> lock(mutex);
  const auto found = modules.find(module.getName());
  if (found != modules.end() && found->second.get() == &module) modules.erase(found);
}

bool QVBroker::isModulePresent(const std::string& name) const {
  std::shared_lock<std::shared_mutex> lock(mutex);
  return modules.count(name) > 0;
}

boost::shared_ptr<QVProxy> QVBroker::getProxy(const std::string& name, int) {
  return boost::make_shared<QVProxy>(shared_from_this(), name);
}

QVValue QVBroker::call(const std::string& module, const std::string& method,
                       QVArguments arguments) {
  boost::shared_ptr<const QVModule> target;
  {
    std::shared_lock<std::shared_mutex> lock(mutex);
    const auto found = modules.find(module);
    if (found != modules.end()) target = found->second;
  }
  if (!target) throw QVError(module, method, "no such module");
  return target->call(method, arguments);
}

ScopedModule::ScopedModule(boost::shared_ptr<QVBroker> owner, boost::shared_ptr<QVModule> given)
    : broker(std::move(owner)), module(given) {
  if (!broker) {
    throw QVError("ScopedModule", "ScopedModule",
                  "no broker given for \"" + (given ? given->getName() : "") + "\"");
  }
  broker->registerModule(std::move(given));
}

// The module may be destroyed at the end, outside the broker's lock: its destructor may call
// others.
ScopedModule::~ScopedModule() {
  if (const auto own = module.lock()) broker->xRemove(*own);
}

}  // namespace QV
