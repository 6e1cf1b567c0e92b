#pragma once

#include "platform/middleware/contracts/memory_contract.h"
#include "platform/middleware/qv_proxy.h"

namespace QV {

/** The shared memory, module "QVMemory": values by key, and events. See QVProxy. */
class QV_API QVMemoryProxy : public QVProxy {
 public:
  explicit QVMemoryProxy(const boost::shared_ptr<QVBroker>& broker,
                         const std::string& module = MemoryContract::kModule);

  /** Returns the value of a key; invalid for an event that was never raised. Throws QVError for an
   * unknown key. */
  QVValue getData(const std::string& key) const;

  /**
   * Returns the 32-bit float or int that holds a key, valid as long as the memory. Read and write
   * it through std::atomic_ref. Throws QVError for an unknown key or one of another type.
   */
  void* getDataPtr(const std::string& key) const;

  /**
   * Sets a key; makes it if needed. Throws QVError for an int beyond 32 bits, or for another type
   * than that of a key whose pointer was handed out.
   */
  void insertData(const std::string& key, const QVValue& value) const;

  void declareEvent(const std::string& event) const;
  /** Sets the event's key and notifies the subscribers; declares an undeclared event. */
  void raiseEvent(const std::string& event, const QVValue& value) const;

  /**
   * Subscribes a module: each time the event is raised, `method` of `module` is called with (event,
   * value, module), in order, on a thread of the middleware. This replaces the module's
   * subscription to the event.
   */
  void subscribeToEvent(const std::string& event, const std::string& module,
                        const std::string& method) const;
  /** Ends a subscription. No call begins after this returns, and a call in progress has ended,
   * unless this is called from it. Throws QVError without such a subscription. The "To" in the name
   * is the interface's. */
  void unsubscribeToEvent(const std::string& event, const std::string& module) const;

  /** Subscribes as the two above, apart from them; `message` takes the third argument's place. */
  void subscribeToMicroEvent(const std::string& event, const std::string& module,
                             const std::string& message, const std::string& method) const;
  void unsubscribeToMicroEvent(const std::string& event, const std::string& module) const;
};

}  // namespace QV
