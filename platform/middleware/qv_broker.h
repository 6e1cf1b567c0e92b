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
 * The middleware's switchboard: holds modules by name and carries every call to them.
 *
 * Each call of each proxy passes through call(), and a proxy's constructor asks isModulePresent()
 * first. So a broker of a derived class can see every call, delay it or let it fail.
 *
 * - Lifetime: owned by a shared pointer. Proxies do not keep it alive; a ScopedModule does.
 * - Threads: thread-safe. It holds no lock while a method runs, so several threads may be in one
 *   method.
 * - Errors: QVError for an unknown module or a name in use.
 *
 * A module of your own, and a call of it:
 *
 *     const auto switchboard = QV::QVBroker::create();
 *     const auto horn = boost::make_shared<QV::QVModule>("Horn");
 *     horn->bindMethod("blow", [](int times) { return times > 0; });
 *     switchboard->registerModule(horn);
 *     std::cout << switchboard->getProxy("Horn")->call<bool>("blow", 2);
 */
class QV_API QVBroker : public boost::enable_shared_from_this<QVBroker> {
 public:
  /** Makes a broker of class T, which QVBrokerManager knows as long as it lives. */
  template <typename T = QVBroker, typename... A>
  static boost::shared_ptr<T> create(A&&... arguments) {
    auto broker = boost::make_shared<T>(std::forward<A>(arguments)...);
    QVBrokerManager::getInstance()->add(broker);
    return broker;
  }

  /** Makes a broker that the manager does not know; see create(). */
  QVBroker();
  virtual ~QVBroker();
  QVBroker(const QVBroker&) = delete;
  QVBroker& operator=(const QVBroker&) = delete;

  /** Adds a module. Throws QVError for null or a name in use. */
  void registerModule(boost::shared_ptr<QVModule> module);
  /** Removes a module. Calls in progress finish; later ones fail. Throws QVError for an unknown
   * name. */
  void unregisterModule(const std::string& name);

  virtual bool isModulePresent(const std::string& name) const;

  /** Makes a proxy of a module. Throws QVError for an unknown one. The interface has a `timeout`,
   * which is not used: a module is there or not. */
  boost::shared_ptr<QVProxy> getProxy(const std::string& name, int timeout = 0);
  template <typename T>
  boost::shared_ptr<T> getSpecialisedProxy(const std::string& name) {
    return boost::make_shared<T>(shared_from_this(), name);
  }

  /** Runs a method of a module on this thread. Throws QVError at once for an unknown module. */
  virtual QVValue call(const std::string& module, const std::string& method, QVArguments arguments);

 private:
  friend class ScopedModule;

  void xRemove(const QVModule& module);

  mutable std::shared_mutex mutex;
  std::map<std::string, boost::shared_ptr<QVModule>> modules;
};

/** A module that is registered for a scope. Use it for a module that holds the broker at which it
 * is registered: without unregistering, module and broker would keep each other alive for ever. It
 * keeps the broker alive until the scope ends. Not copyable. */
class QV_API ScopedModule {
 public:
  /** Registers the module as QVBroker::registerModule does. Throws QVError for a null broker. */
  ScopedModule(boost::shared_ptr<QVBroker> broker, boost::shared_ptr<QVModule> module);
  /** Unregisters the module, unless that was done already. If another module has been registered
   * under its name since then, that one stays registered. Calls that run go on to their end. */
  ~ScopedModule();
  ScopedModule(const ScopedModule&) = delete;
  ScopedModule& operator=(const ScopedModule&) = delete;

 private:
  boost::shared_ptr<QVBroker> broker;
  boost::weak_ptr<QVModule> module;
};

}  // namespace QV
