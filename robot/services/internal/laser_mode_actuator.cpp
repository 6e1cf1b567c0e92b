#include "robot/services/internal/laser_mode_actuator.h"

#include <cstdint>
#include <mutex>

#include <boost/make_shared.hpp>
#include <boost/smart_ptr/enable_shared_from_this.hpp>
#include <boost/weak_ptr.hpp>

#include "platform/ko/internal/event_loop.h"
#include "platform/middleware/qv_broker.h"
#include "platform/middleware/qv_memory_proxy.h"
#include "robot/services/internal/device_manager.h"
#include "robot/services/internal/mode_pairs.h"

namespace QV::robot {

class LaserModeActuator::State : public boost::enable_shared_from_this<State> {
 public:
  State(const boost::shared_ptr<QVBroker>& broker, const std::string& modeKey, ko::Duration delay,
        Listener listener)
      : broker(broker), modeKey(modeKey), listener(std::move(listener)), delay(delay) {
    xWrite();
  }

  void setDelay(std::optional<ko::Duration> newDelay) {
    std::lock_guard<std::mutex> lock(mutex);
    delay = newDelay;
    if (!delay) ++generation;
  }

  void setDeadBits(int bits) {
    std::lock_guard<std::mutex> lock(mutex);
    deadBits = bits;
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

  void xShow(std::int32_t mode) {
    shown = mode & ~(deadBits & ~shown);
    if (listener) listener(shown);
    xWrite();
  }

  void xWrite() const { QVMemoryProxy(broker.lock()).insertData(modeKey, shown); }

  const boost::weak_ptr<QVBroker> broker;
  const std::string modeKey;
  const Listener listener;
  std::mutex mutex;
  std::optional<ko::Duration> delay;
  std::int32_t shown = 0;
  std::int32_t deadBits = 0;
  int generation = 0;
};

LaserModeActuator::LaserModeActuator(const boost::shared_ptr<QVBroker>& broker,
                                     const boost::shared_ptr<DeviceManager>& devices,
                                     const std::string& actuator, const std::string& modeKey,
                                     ko::Duration delay, Listener listener)
    : devices(devices),
      actuator(actuator),
      state(boost::make_shared<State>(broker, modeKey, delay, std::move(listener))) {
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

void LaserModeActuator::setDeadBits(int bits) {
  state->setDeadBits(bits);
}

LaserModes makeLaserModes(const boost::shared_ptr<QVBroker>& broker,
                          const boost::shared_ptr<DeviceManager>& devices,
                          const Model::Robot& robot) {
  LaserModes modes;
  const ModePairs pairs(robot);
  for (const auto& [actuator, key] : pairs.getKeys())
    modes.push_back(
        std::make_unique<LaserModeActuator>(broker, devices, actuator, key, ko::Duration::zero()));
  return modes;
}

}  // namespace QV::robot
