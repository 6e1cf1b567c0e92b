#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <string>

#include <boost/shared_ptr.hpp>
#include <boost/smart_ptr/enable_shared_from_this.hpp>
#include <boost/weak_ptr.hpp>

#include "platform/api.h"
#include "platform/ko/clock.h"
#include "platform/middleware/qv_module.h"
#include "platform/middleware/qv_value.h"

namespace QV {
class QVBroker;
}

namespace QV::robot {

struct DeviceCommand;

/**
 * The device manager, module "DCM": the clock of the robot's devices, and timed commands to its
 * actuators; DCMProxy says what its methods do. What is due takes effect before `set` returns, the
 * rest at its time on the event loop; values of the same time in the order of their setting. It
 * writes the memory key of an actuator that no handler was set for. Owned by a shared pointer;
 * commands that are pending when it dies are dropped.
 */
class QV_API DeviceManager : public QVModule, public boost::enable_shared_from_this<DeviceManager> {
 public:
  /** Applies a due value to an actuator; one call at a time. Exceptions are logged. */
  using ActuatorHandler = std::function<void(const std::string& key, const QVValue& value)>;

  explicit DeviceManager(const boost::shared_ptr<QVBroker>& broker);
  ~DeviceManager() override;

  /** Sets the handler of an actuator; an empty one restores the memory key. Thread-safe. */
  void setActuatorHandler(const std::string& key, ActuatorHandler handler);

 private:
  struct Pending {
    std::string key;
    QVValue value;
  };

  std::int32_t xGetTime(std::int32_t offset) const;
  void xSet(const QVValue& value);
  void xEnqueue(const DeviceCommand& command);
  void xClear(const DeviceCommand& command);
  void xWake(ko::Clock::time_point due, ko::Clock::time_point now);
  void xRunUntil(ko::Clock::time_point time);
  std::optional<Pending> xTakeDue(ko::Clock::time_point time);
  void xApply(const Pending& due);
  void xWriteToMemory(const Pending& due);

  const boost::weak_ptr<QVBroker> broker;
  // Taken first, and held while a value takes effect; recursive as a handler may set others.
  std::recursive_mutex running;
  std::mutex mutex;
  std::multimap<ko::Clock::time_point, Pending> pending;
  std::map<std::string, ActuatorHandler> handlers;
};

}  // namespace QV::robot
