#include "platform/middleware/qv_proxy.h"

#include "platform/middleware/qv_broker.h"
#include "platform/middleware/qv_error.h"

namespace QV {

QVProxy::QVProxy(const boost::shared_ptr<QVBroker>& broker, const std::string& module)
    : broker(broker), module(module) {
  if (!broker) throw QVError("QVProxy", "QVProxy", "no broker given for module \"" + module + "\"");
  if (!broker->isModulePresent(module)) {
    throw QVError("QVProxy", "QVProxy", "no module \"" + module + "\"");
  }
}

QVProxy::~QVProxy() = default;
QVProxy::QVProxy(const QVProxy&) = default;
QVProxy& QVProxy::operator=(const QVProxy&) = default;

QVValue QVProxy::call(const std::string& method, const std::vector<QVValue>& arguments) const {
  return xCall(method, arguments);
}

QVValue QVProxy::xCall(const std::string& method, QVArguments arguments) const {
  const auto alive = broker.lock();
  if (!alive) throw QVError(module, method, "the broker is gone");
  return alive->call(module, method, arguments);
}

void QVProxy::xRefuseResult(const std::string& method, const std::string& expected,
                            const QVValue& given) const {
  throw QVError(
      module, method,
      "result " + expected + " expected, " + QVValue::getTypeName(given.getType()) + " given");
}

}  // namespace QV
