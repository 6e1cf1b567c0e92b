#include "robot/services/laser_mode_actuator.h"

#include <cstdint>
#include <mutex>

#include <boost/make_shared.hpp>
#include <boost/smart_ptr/enable_shared_from_this.hpp>
#include <boost/weak_ptr.hpp>

#include "platform/ko/event_loop.h"
#include "platform/middleware/qv_broker.h"
#include "platform/middleware/qv_memory_proxy.h"
#include "robot/services/device_manager.h"

namespace QV::robot {

class LaserModeActuator::State : public boost::enable_shared_from_this<State> {
 public:
  State(const boost::shared_ptr<QVBroker>& broker, const std::string& modeKey, ko::Duration delay)
      : broker(broker), modeKey(modeKey), delay(delay) {
    xShow(0);
  }

  void setDelay(std::optional<ko::Duration> newDelay) {
    std::lock_guard<std::mutex> lock(mutex);
    delay = newDelay;
    if (!delay) ++generation;
  }

  void command(std::int32_t mode) {
    std::lock_guard<std::mutex> lock(mutex);
    const int own = ++generation;
    if (!delay) return;
    if (*delay <= ko::Duration::zero()) return xShow(mode);
    ko::getEventLoop().asyncDelay(
        [weak = weak_from_this(), mode, own] {
          if (const auto alive = weak.lock()) alive->xShowIfNewest(mode, own);
        },
        *delay);
  }

 private:
  void xShowIfNewest(std::int32_t mode, int commandGeneration) {
    std::lock_guard<std::mutex> lock(mutex);
    if (commandGeneration == generation) xShow(mode);
  }

  void xShow(std::int32_t mode) const { QVMemoryProxy(broker.lock()).insertData(modeKey, mode); }

  const boost::weak_ptr<QVBroker> broker;
  const std::string modeKey;
  std::mutex mutex;
  std::optional<ko::Duration> delay;
  int generation = 0;
};

LaserModeActuator::LaserModeActuator(const boost::shared_ptr<QVBroker>& broker,
                                     const boost::shared_ptr<DeviceManager>& devices,
                                     const std::string& actuator, const std::string& modeKey,
                                     ko::Duration delay)
    : devices(devices),
      actuator(actuator),
      state(boost::make_shared<State>(broker, modeKey, delay)) {
  devices->setActuatorHandler(actuator, [state = state](const std::string&, const QVValue& value) {
    state->command(value.toInt32());
  });
}

LaserModeActuator::~LaserModeActuator() {
  devices->setActuatorHandler(actuator, {});
}

void LaserModeActuator::setDelay(std::optional<ko::Duration> delay) {
  state->setDelay(delay);
}

}  // namespace QV::robot
