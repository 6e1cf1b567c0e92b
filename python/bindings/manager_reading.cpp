#include "python/bindings/common.h"
#include "python/bindings/manager_handle.h"
#include "python/bindings/records.h"
#include "sensor/core/scoped_subscription.h"

namespace QV::python {
namespace {

py::list readManager(const ManagerHandle& handle, const Names& names) {
  return toPython(handle.read([](auto& manager) { return manager.shareMetricalData(); }), names);
}

py::object lastTrouble(const ManagerHandle& handle, const std::string& sensor) {
  const auto trouble = handle.ask([&](auto& manager) { return manager.getLastTrouble(sensor); });
  return trouble ? toPython(*trouble) : py::none();
}

std::map<std::string, std::string> awaitManager(const ManagerHandle& handle, ko::Duration limit,
                                                const Names& names) {
  constexpr int kPollMs = 10;
  const auto end = endOf(limit);
  for (;;) {
    auto missing = handle.read([names](auto& manager) {
      return findMissingRecords(manager, names.names.value_or(manager.getFamilyNames()));
    });
    if (missing.empty() || ko::Clock::now() >= end) return missing;
    unlocked([] { ko::os::msleep(kPollMs); });
    checkInterrupt();
  }
}

void bindRecordQuestions(ManagerClass& type) {
  type.def("get_metrical_data", &readManager, "names"_a = py::none(),
           R"(get_metrical_data(names: Names = None) -> list[Record]

Returns the records of all started sensors, in the order of their names. If names are given, returns
for each name in order the records of that sensor or family. Copies no points.)")
      .def("await_records", &awaitManager, "limit"_a, "names"_a = py::none(),
           R"(await_records(limit: int, names: Names = None) -> dict[str, str]

Waits until each sensor, by default all, has a fresh record or a reason for none, but not longer than
`limit`, nanoseconds of clock(). Returns the sensors without a record, each with the reason. On the
thread that made a SimulatedTime it advances that; another thread waits until that is advanced.)")
      .def("get_last_trouble", &lastTrouble, "sensor"_a,
           R"(get_last_trouble(sensor: str) -> LogRecord | None

Returns the last warning or error about a sensor, also about one that could not be built. None if there
was none.)");
}

}  // namespace

void bindManagerReading(ManagerClass& type) {
  bindRecordQuestions(type);
}

}  // namespace QV::python
