#pragma once

#include "platform/middleware/contracts/memory_contract.h"
#include "platform/middleware/qv_proxy.h"

namespace QV {

/** The shared memory, module "QVMemory": values by key, and events. See QVProxy. */
class QV_API QVMemoryProxy : public QVProxy {
 public:
  explicit QVMemoryProxy(const boost::shared_ptr<QVBroker>& broker,
                         const std::string& module = MemoryContract::kModule);

  /** The value of a key; invalid for an event that was never raised. An unknown key: QVError. */
  QVValue getData(const std::string& key) const;

  /**
   * The 32-bit float or int that a key is stored in, good for the memory's life; to be read and
   * written through std::atomic_ref. An unknown key or one of another type: QVError.
   */
  void* getDataPtr(const std::string& key) const;

  /**
   * Sets a key, made if needed. An int beyond 32 bits, or another type than that of a key whose
   * pointer was handed out: QVError.
   */
  void insertData(const std::string& key, const QVValue& value) const;

  void declareEvent(const std::string& event) const;
  /** Sets the key of that name, and tells the subscribers; undeclared events are declared. */
  void raiseEvent(const std::string& event, const QVValue& value) const;

  /**
   * Subscribes a module: each time the event is raised, `method` of `module` is called with (event,
   * value, module), in order, on a thread of the middleware. This replaces the module's
   * subscription to the event.
   */
  void subscribeToEvent(const std::string& event, const std::string& module,
                        const std::string& method) const;
  /** Ends a subscription: no call begins after this returns, and one that runs has ended, unless
   * this is called from it. No such subscription: QVError. The "To" in the name is the
   * interface's. */
  void unsubscribeToEvent(const std::string& event, const std::string& module) const;

  /** Subscribes as the two above, apart from them; `message` takes the third argument's place. */
  void subscribeToMicroEvent(const std::string& event, const std::string& module,
                             const std::string& message, const std::string& method) const;
  void unsubscribeToMicroEvent(const std::string& event, const std::string& module) const;
};

}  // namespace QV
