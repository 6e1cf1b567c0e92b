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

How a sensor is and why; also of one that could not be built. None for a name that there is not.)")
      .def("get_all_health", &allHealth,
           R"(get_all_health() -> dict[str, Health]

Of every sensor, by name.)")
      .def("on_health_changed", &onHealthChanged, "callback"_a,
           R"(on_health_changed(callback: Callable[[str, Health], object] | None) -> None

Has each change of a sensor's state told from now on, by the sensor's name, one at a time and in
order, on the thread that found it: that of the refresh, or one that asks. What it raises is logged.
It is kept until another or None takes its place, or the manager ends.)");
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

Changes what counts as too much: "FrontLaser:age=0.5", "Sonar:turn=off", or "age=0.5" for all. False
for a name that there is not; ValueError for a rule that is none.)")
      .def(
          "watch_health",
          [](const ManagerHandle& handle, bool on) {
            handle.ask([on](auto& manager) { manager.watchHealth(on); });
          },
          "on"_a,
          R"(watch_health(on: bool) -> None

Whether records are watched, as they are at first; switches and hardware always are.)");
}

}  // namespace QV::python
