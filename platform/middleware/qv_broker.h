#pragma once

#include <map>
#include <shared_mutex>
#include <string>

#include <boost/make_shared.hpp>
#include <boost/shared_ptr.hpp>
#include <boost/smart_ptr/enable_shared_from_this.hpp>

#include "platform/api.h"
#include "platform/middleware/qv_broker_manager.h"
#include "platform/middleware/qv_module.h"

namespace QV {

class QVProxy;

/**
 * Holds modules by name and carries every call to them: each call of each proxy passes through
 * call(), each proxy is made after isModulePresent(), so a derived broker sees, fails or delays
 * whatever it likes. Owned by a shared pointer; proxies do not keep it alive. All operations are
 * safe from any thread.
 */
class QV_API QVBroker : public boost::enable_shared_from_this<QVBroker> {
 public:
  /** A broker, or one of a derived class, that the manager knows as long as it lives. */
  template <typename T = QVBroker, typename... A>
  static boost::shared_ptr<T> create(A&&... arguments) {
    auto broker = boost::make_shared<T>(std::forward<A>(arguments)...);
    QVBrokerManager::getInstance()->add(broker);
    return broker;
  }

  /** Unknown to the manager; see create(). */
  QVBroker();
  virtual ~QVBroker();
  QVBroker(const QVBroker&) = delete;
  QVBroker& operator=(const QVBroker&) = delete;

  /** A null module or a name in use: QVError. */
  void registerModule(boost::shared_ptr<QVModule> module);
  /** Calls that run go on to their end; later ones fail. An unknown name: QVError. */
  void unregisterModule(const std::string& name);

  virtual bool isModulePresent(const std::string& name) const;

  /** An unknown module: QVError. `timeout` is not used: a module is there or not. */
  boost::shared_ptr<QVProxy> getProxy(const std::string& name, int timeout = 0);
  template <typename T>
  boost::shared_ptr<T> getSpecialisedProxy(const std::string& name) {
    return boost::make_shared<T>(shared_from_this(), name);
  }

  /** Runs a method of a module on this thread; an unknown module: QVError at once. */
  virtual QVValue call(const std::string& module, const std::string& method, QVArguments arguments);

 private:
  mutable std::shared_mutex mutex;
  std::map<std::string, boost::shared_ptr<QVModule>> modules;
};

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
