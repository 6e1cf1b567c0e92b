#include "platform/middleware/dcm_proxy.h"

#include "platform/middleware/contracts/device_manager_contract.h"

namespace QV {

DCMProxy::DCMProxy(const boost::shared_ptr<QVBroker>& broker, const std::string& module)
    : QVProxy(broker, module) {}

std::int32_t DCMProxy::getTime(int offset) const {
  return call<std::int32_t>(DeviceManagerContract::kGetTime, offset);
}

void DCMProxy::set(const QVValue& command) const {
  callVoid(DeviceManagerContract::kSet, command);
}

}  // namespace QV
