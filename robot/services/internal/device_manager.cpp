#include "robot/services/internal/device_manager.h"

#include <algorithm>

#include "platform/ko/internal/event_loop.h"
#include "platform/ko/log.h"
#include "platform/middleware/contracts/device_manager_contract.h"
#include "platform/middleware/qv_memory_proxy.h"
#include "robot/services/internal/device_command.h"

namespace QV::robot {

using TimePoint = ko::Clock::time_point;

DeviceManager::DeviceManager(const boost::shared_ptr<QVBroker>& broker)
    : QVModule(DeviceManagerContract::kModule), broker(broker) {
  bindMethod(DeviceManagerContract::kGetTime, &DeviceManager::xGetTime, this);
  bindMethod(DeviceManagerContract::kSet, &DeviceManager::xSet, this);
}

DeviceManager::~DeviceManager() = default;

void DeviceManager::setActuatorHandler(const std::string& key, ActuatorHandler handler) {
  std::lock_guard<std::mutex> lock(mutex);
  if (handler) {
    handlers[key] = std::move(handler);
  } else {
    handlers.erase(key);
  }
}

std::int32_t DeviceManager::xGetTime(std::int32_t offset) const {
  const auto now = static_cast<std::uint32_t>(ko::Clock::toInt32ms(ko::Clock::now()));
  return static_cast<std::int32_t>(now + static_cast<std::uint32_t>(offset));
}

void DeviceManager::xSet(const QVValue& value) {
  const TimePoint now = ko::Clock::now();
  const DeviceCommand command = parseDeviceCommand(value, now);
  xEnqueue(command);
  xRunUntil(now);
  for (const auto& timed : command.values) xWake(timed.time, now);
}

void DeviceManager::xEnqueue(const DeviceCommand& command) {
  std::lock_guard<std::mutex> lock(mutex);
  xClear(command);
  for (const auto& timed : command.values) {
    pending.emplace(timed.time, Pending{command.key, timed.value});
  }
}

void DeviceManager::xClear(const DeviceCommand& command) {
  const auto [first, last] =
      std::minmax_element(command.values.begin(), command.values.end(),
                          [](const auto& a, const auto& b) { return a.time < b.time; });
  TimePoint from = TimePoint::min();
  TimePoint to = TimePoint::max();
  if (command.mode != DeviceCommand::Mode::clearAll) {
    if (command.mode == DeviceCommand::Mode::merge || command.values.empty()) return;
    if (command.mode == DeviceCommand::Mode::clearAfter) from = first->time;
    if (command.mode == DeviceCommand::Mode::clearBefore) to = last->time;
  }
  std::erase_if(pending, [&](const auto& entry) {
    return entry.second.key == command.key && entry.first >= from && entry.first <= to;
  });
}

// A value that is cleared later leaves its call, which then finds nothing due.
void DeviceManager::xWake(TimePoint due, TimePoint now) {
  if (due <= now) return;
  ko::getEventLoop().asyncDelay(
      [weak = weak_from_this(), due] {
        if (const auto alive = weak.lock()) alive->xRunUntil(due);
      },
      due - now);
}

void DeviceManager::xRunUntil(TimePoint time) {
  std::lock_guard<std::recursive_mutex> lock(running);
  while (const auto due = xTakeDue(time)) xApply(*due);
}

std::optional<DeviceManager::Pending> DeviceManager::xTakeDue(TimePoint time) {
  std::lock_guard<std::mutex> lock(mutex);
  if (pending.empty() || pending.begin()->first > time) return std::nullopt;
  return std::move(pending.extract(pending.begin()).mapped());
}

void DeviceManager::xApply(const Pending& due) {
  ActuatorHandler handler;
  {
    std::lock_guard<std::mutex> lock(mutex);
    const auto found = handlers.find(due.key);
    if (found != handlers.end()) handler = found->second;
  }
  try {
    if (handler) {
      handler(due.key, due.value);
    } else {
      xWriteToMemory(due);
    }
  } catch (const std::exception& error) {
    ko::log::error(DeviceManagerContract::kModule, DeviceManagerContract::kSet)
        << "Actuator " << due.key << ": " << error.what();
  } catch (...) {
    ko::log::error(DeviceManagerContract::kModule, DeviceManagerContract::kSet)
        << "Actuator " << due.key << ": unknown failure";
  }
}

void DeviceManager::xWriteToMemory(const Pending& due) {
  QVMemoryProxy(broker.lock()).insertData(due.key, due.value);
}

}  // namespace QV::robot
