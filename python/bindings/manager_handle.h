#pragma once

#include <functional>
#include <memory>
#include <utility>

#include "python/bindings/ending.h"
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

/** Makes a manager of sensors of one's own, which are read whenever somebody asks. */
std::shared_ptr<ManagerHandle> makeListManager(const pybind11::iterable& sensors);

void bindManagerReading(ManagerClass& type);
void bindManagerSwitches(ManagerClass& type);
void bindManagerHealth(ManagerClass& type);
/** Binds the managers that a caller can make. */
void bindManagerKinds(pybind11::module_& module);

}  // namespace QV::python
