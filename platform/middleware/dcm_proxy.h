#pragma once

#include <cstdint>

#include "platform/middleware/contracts/device_manager_contract.h"
#include "platform/middleware/qv_proxy.h"

namespace QV {

/** The device manager, module "DCM". See QVProxy. */
class QV_API DCMProxy : public QVProxy {
 public:
  explicit DCMProxy(const boost::shared_ptr<QVBroker>& broker,
                    const std::string& module = DeviceManagerContract::kModule);

  /** Returns the device manager's clock plus `offset`, in milliseconds modulo 2^32. An answer that
   * is no signed 32-bit number is a QVError: saturated, it would stand still. */
  std::int32_t getTime(int offset) const;

  /**
   * Commands an actuator: [key, mode, [[value, time], ...]], times as getTime counts them. Mode
   * says which pending commands of the key go: "Merge", "ClearAll", "ClearAfter", "ClearBefore".
   */
  void set(const QVValue& command) const;
};

}  // namespace QV
