#include "platform/middleware/qv_memory_proxy.h"

#include "platform/middleware/contracts/memory_contract.h"

namespace QV {

QVMemoryProxy::QVMemoryProxy(const boost::shared_ptr<QVBroker>& broker, const std::string& module)
    : QVProxy(broker, module) {}

QVValue QVMemoryProxy::getData(const std::string& key) const {
  return call<QVValue>(MemoryContract::kGetData, key);
}

void* QVMemoryProxy::getDataPtr(const std::string& key) const {
  // An address travels as an int.
  return reinterpret_cast<void*>(call<std::intptr_t>(MemoryContract::kGetDataPtr, key));
}

void QVMemoryProxy::insertData(const std::string& key, const QVValue& value) const {
  callVoid(MemoryContract::kInsertData, key, value);
}

void QVMemoryProxy::declareEvent(const std::string& event) const {
  callVoid(MemoryContract::kDeclareEvent, event);
}

void QVMemoryProxy::raiseEvent(const std::string& event, const QVValue& value) const {
  callVoid(MemoryContract::kRaiseEvent, event, value);
}

void QVMemoryProxy::subscribeToEvent(const std::string& event, const std::string& module,
                                     const std::string& method) const {
  callVoid(MemoryContract::kSubscribeToEvent, event, module, method);
}

void QVMemoryProxy::unsubscribeToEvent(const std::string& event, const std::string& module) const {
  callVoid(MemoryContract::kUnsubscribeToEvent, event, module);
}

void QVMemoryProxy::subscribeToMicroEvent(const std::string& event, const std::string& module,
                                          const std::string& message,
                                          const std::string& method) const {
  callVoid(MemoryContract::kSubscribeToMicroEvent, event, module, message, method);
}

void QVMemoryProxy::unsubscribeToMicroEvent(const std::string& event,
                                            const std::string& module) const {
  callVoid(MemoryContract::kUnsubscribeToMicroEvent, event, module);
}

}  // namespace QV
