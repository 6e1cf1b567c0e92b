#pragma once

#include <functional>
#include <memory>
#include <utility>

#include "python/bindings/ending.h"
#include "python/bindings/sensor_list_manager.h"
#include "python/bindings/waiting.h"
#include "sensor/core/sensor_manager.h"

namespace QV::python {

/** A manager as Python sees it: one that may have ended, alone or with its session. */
class ManagerHandle : public Ending {
 public:
  using Finder = std::function<std::shared_ptr<sensor::SensorManager>()>;

  /** Holds a manager of its own. */
  explicit ManagerHandle(std::shared_ptr<sensor::SensorManager> manager);
  /** Somebody else's, who throws once there is none. */
  explicit ManagerHandle(Finder find);
  ~ManagerHandle() override;

  /** RuntimeError if it has ended, or from within a sensor. */
  std::shared_ptr<sensor::SensorManager> get() const;

  /** Calls the manager; see askUnlocked. */
  template <typename Call>
  auto ask(Call call) const {
    return askUnlocked(get(), std::move(call));
  }

  /** Calls what may wait for hardware; see askPatiently. */
  template <typename Call>
  auto await(Call call) const {
    return askPatiently(get(), std::move(call));
  }

  /** Reads, as `await` does if a sensor in Python is being read already. */
  template <typename Call>
  auto read(Call call) const {
    const auto own = get();
    const auto* const list = dynamic_cast<const SensorListManager*>(own.get());
    return list && list->isBeingRead() ? askPatiently(own, std::move(call))
                                       : askUnlocked(own, std::move(call));
  }

  bool isOpen() const;
  bool isBorrowed() const { return find != nullptr; }
  /** Waits for its hardware, but for Ctrl-C. */
  void close() override;
  /** Ends it; one that is in use elsewhere ends there. */
  void end() override;

 private:
  std::shared_ptr<sensor::SensorManager> manager;
  const Finder find;
};

/** A simulated robot's. */
class SimulatedManagerHandle : public ManagerHandle {
 public:
  using ManagerHandle::ManagerHandle;
};

/** A robot's. */
class RealManagerHandle : public ManagerHandle {
 public:
  using ManagerHandle::ManagerHandle;
};

using ManagerClass = pybind11::class_<ManagerHandle, std::shared_ptr<ManagerHandle>>;

void bindManagerReading(ManagerClass& type);
void bindManagerQuestions(ManagerClass& type);
void bindManagerSwitches(ManagerClass& type);
void bindManagerHealth(ManagerClass& type);
/** Binds the managers that a caller can make. */
void bindManagerKinds(pybind11::module_& module);

}  // namespace QV::python
