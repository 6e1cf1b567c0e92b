#include "python/bindings/health.h"

#include "python/bindings/common.h"
#include "python/bindings/manager_handle.h"

namespace QV::python {
namespace {

py::object healthOf(const ManagerHandle& handle, const std::string& sensor) {
  const auto health = handle.ask([&](auto& manager) { return manager.getHealth(sensor); });
  return health ? toPython(*health) : py::none();
}

py::dict allHealth(const ManagerHandle& handle) {
  py::dict all;
  const auto health = handle.ask([](auto& manager) { return manager.getHealth(); });
  for (const auto& [sensor, state] : health) all[py::str(sensor)] = toPython(state);
  return all;
}

void onHealthChanged(const ManagerHandle& handle, const std::optional<py::function>& callback) {
  sensor::SensorManager::HealthCallback call;
  if (callback) {
    call = [kept = keep(*callback)](const std::string& sensor, const sensor::SensorHealth& health) {
      callPython([&] { py::handle(kept.get())(sensor, toPython(health)); });
    };
  }
  handle.ask([&](auto& manager) { manager.onHealthChanged(std::move(call)); });
}

void bindHealthQuestions(ManagerClass& type) {
  type.def("get_health", &healthOf, "sensor"_a,
           R"(get_health(sensor: str) -> Health | None

Returns a sensor's health; also for a sensor that could not be built. None for an unknown name.)")
      .def("get_all_health", &allHealth,
           R"(get_all_health() -> dict[str, Health]

Returns the health of every sensor, by name.)")
      .def("on_health_changed", &onHealthChanged, "callback"_a,
           R"(on_health_changed(callback: Callable[[str, Health], object] | None) -> None

Sets the callback for changes of a sensor's state; None removes it. It is called with the sensor's
name and health, for one change at a time, in order. It runs on the thread that found the change: the
refresh's or a caller's. An exception is logged. The manager keeps the callback until it ends.)");
}

}  // namespace

py::object toPython(const sensor::SensorHealth& health) {
  static const py::handle type = typeNamed("Health");
  return type(getName(health.state), health.since.time_since_epoch().count(), health.reason,
              health.remedy, health.times);
}

void bindManagerHealth(ManagerClass& type) {
  bindHealthQuestions(type);
  type.def(
          "set_health_limit",
          [](const ManagerHandle& handle, const std::string& rule) {
            const auto parsed = sensor::parseHealthRule(rule);
            return handle.ask([&](auto& manager) { return manager.setHealthLimit(parsed); });
          },
          "rule"_a,
          R"(set_health_limit(rule: str) -> bool

Changes a limit of a sensor or a family ("FrontLaser:age=0.5"), or of all ("age=0.5"), or switches it
off ("Sonar:turn=off"). Returns False for an unknown name. Raises ValueError for a malformed rule.)")
      .def(
          "watch_health",
          [](const ManagerHandle& handle, bool on) {
            handle.ask([on](auto& manager) { manager.watchHealth(on); });
          },
          "on"_a,
          R"(watch_health(on: bool) -> None

Switches the watching of records on (the default) or off. While it is off, every sensor that runs
counts as sound. Switches and hardware are always watched.)");
}

}  // namespace QV::python
