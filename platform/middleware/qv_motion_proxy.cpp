#include "platform/middleware/qv_motion_proxy.h"

#include "platform/middleware/contracts/motion_contract.h"

namespace QV {

QVMotionProxy::QVMotionProxy(const boost::shared_ptr<QVBroker>& broker, const std::string& module)
    : QVProxy(broker, module) {}

std::vector<float> QVMotionProxy::getTransform(const std::string& name, int frame,
                                               bool useSensorValues) const {
  return call<std::vector<float>>(MotionContract::kGetTransform, name, frame, useSensorValues);
}

std::vector<float> QVMotionProxy::getRobotVelocity() const {
  return call<std::vector<float>>(MotionContract::kGetRobotVelocity);
}

}  // namespace QV
