#include "platform/middleware/dcm_proxy.h"

#include "platform/middleware/contracts/device_manager_contract.h"
#include "platform/middleware/qv_error.h"

namespace QV {

DCMProxy::DCMProxy(const boost::shared_ptr<QVBroker>& broker, const std::string& module)
    : QVProxy(broker, module) {}

std::int32_t DCMProxy::getTime(int offset) const {
  const auto count = call<std::int64_t>(DeviceManagerContract::kGetTime, offset);
  const auto signedCount = static_cast<std::int32_t>(count);
  if (signedCount == count) return signedCount;
  throw QVError(DeviceManagerContract::kModule, DeviceManagerContract::kGetTime,
                "a signed 32-bit count expected, " + std::to_string(count) + " given");
}

void DCMProxy::set(const QVValue& command) const {
  callVoid(DeviceManagerContract::kSet, command);
}

}  // namespace QV
