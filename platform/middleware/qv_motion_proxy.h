#pragma once

#include "platform/middleware/contracts/motion_contract.h"
#include "platform/middleware/qv_proxy.h"

namespace QV {

/** The motion service, module "QVMotion". Copied by value. See QVProxy. */
class QV_API QVMotionProxy : public QVProxy {
 public:
  explicit QVMotionProxy(const boost::shared_ptr<QVBroker>& broker,
                         const std::string& module = MotionContract::kModule);

  /**
   * The pose of a sensor, joint or link, 12 floats by rows, in `frame`: 0 the robot's body, 1 its
   * ground frame. From measured joints or, without `useSensorValues`, from commanded ones.
   */
  std::vector<float> getTransform(const std::string& name, int frame, bool useSensorValues) const;

  /** Forward and leftward in m/s, turning in rad/s. */
  std::vector<float> getRobotVelocity() const;

  /** Gives access to the methods that have no operation here. */
  const QVProxy& getGenericProxy() const { return *this; }
};

}  // namespace QV
