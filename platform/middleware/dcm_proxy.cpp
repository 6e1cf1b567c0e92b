#include "platform/middleware/dcm_proxy.h"

namespace QV {

DCMProxy::DCMProxy(const boost::shared_ptr<QVBroker>& broker, const std::string& module)
    : QVProxy(broker, module) {}

std::int32_t DCMProxy::getTime(int offset) const {
  return call<std::int32_t>("getTime", offset);
}

void DCMProxy::set(const QVValue& command) const {
  callVoid("set", command);
}

}  // namespace QV
