#include "python/bindings/faults.h"
#include "python/bindings/session_handle.h"

namespace QV::python {
namespace {

void setSessionFault(const SessionHandle& handle, const std::string& sensor,
                     const std::string& kind, ko::Duration begin, std::optional<ko::Duration> end) {
  const robot::Fault fault{sensor, faultKindFrom(kind), begin, end.value_or(ko::Duration::max())};
  handle.look([&](session::Session& session) { session.setFault(fault); });
}

void clearSessionFault(const SessionHandle& handle, const std::string& sensor) {
  handle.look([&](session::Session& session) { session.clearFault(sensor); });
}

std::vector<std::string> faultySensors(const SessionHandle& handle) {
  return handle.look([](session::Session& session) { return session.getFaultySensors(); });
}

std::vector<std::string> possibleFaults(const SessionHandle& handle, const std::string& sensor) {
  return namesOf(
      handle.look([&](session::Session& session) { return session.getPossibleFaults(sensor); }));
}

}  // namespace

void bindSessionFaults(SessionClass& type) {
  type.def(
          "set_fault", &setSessionFault, "sensor"_a, "kind"_a, "begin"_a = ko::Duration::zero(),
          "end"_a = py::none(),
          R"(set_fault(sensor: str, kind: FaultKind, begin: int = 0, end: int | None = None) -> None

Makes a sensor of a virtual robot fail from `begin` to `end`, nanoseconds since the session was opened;
`end` None: for good. Raises ValueError for a wrong name or kind; it lists the right ones.)")
      .def("clear_fault", &clearSessionFault, "sensor"_a,
           "clear_fault(sensor: str) -> None\n\nEnds all faults of a sensor.")
      .def_property_readonly(
          "faulty_sensors", &faultySensors,
          "list[str]: The sensors that can be made to fail: none without a virtual robot.")
      .def("get_possible_faults", &possibleFaults, "sensor"_a,
           "get_possible_faults(sensor: str) -> list[FaultKind]");
}

}  // namespace QV::python
