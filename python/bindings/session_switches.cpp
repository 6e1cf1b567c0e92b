#include "python/bindings/session_handle.h"

namespace QV::python {
namespace {

void subscribeSession(const SessionHandle& handle, const std::string& subscriber,
                      const Names& names) {
  handle.await([subscriber, wanted = namesIn(handle, names)](session::Session& session) {
    session.subscribe(subscriber, wanted);
  });
}

void unsubscribeSession(const SessionHandle& handle, const std::string& subscriber,
                        const Names& names) {
  handle.await([subscriber, wanted = namesIn(handle, names)](session::Session& session) {
    session.unsubscribe(subscriber, wanted);
  });
}

void enableSession(const SessionHandle& handle, const std::string& name, bool on) {
  handle.await([=](session::Session& session) { session.enable(name, on); });
}

void diagnoseSession(const SessionHandle& handle, const std::string& sensor, bool success) {
  handle.await([=](session::Session& session) { session.diagnose(sensor, success); });
}

void setSessionDemand(SessionHandle& handle, const session::Demand& demand) {
  handle.useAside([=](session::Session& session) { session.setDemand(demand); });
}

}  // namespace

std::set<std::string> namesIn(const SessionHandle& handle, const Names& names) {
  if (names.names) return *names.names;
  return handle.ask(
      [](session::Session& session) { return session.getManager().getFamilyNames(); });
}

void bindSessionSwitches(SessionClass& type) {
  type.def("subscribe", &subscribeSession, "subscriber"_a, "names"_a = py::none(),
           R"(subscribe(subscriber: str, names: Names = None) -> None

Subscribes to sensors or families, by default all. Waits while hardware starts. If that needs simulated
time, a call on another thread waits until the session runs. Raises ValueError for an unknown name.
`subscription` does the same for a `with` block. From any thread.)")
      .def("unsubscribe", &unsubscribeSession, "subscriber"_a, "names"_a = py::none(),
           "unsubscribe(subscriber: str, names: Names = None) -> None\n\n"
           "Ends subscriptions of this subscriber, by default all.")
      .def("enable", &enableSession, "name"_a, "on"_a,
           R"(enable(name: str, on: bool) -> None

Enables or disables a sensor or a family. Raises ValueError for an unknown name. From any thread.)")
      .def("diagnose", &diagnoseSession, "sensor"_a, "success"_a,
           R"(diagnose(sensor: str, success: bool) -> None

Sets a sensor's diagnosis: a bad one (False) stops it, a good one lets it start again. Raises ValueError
for an unknown name. From any thread.)")
      .def("set_demand", &setSessionDemand, "demand"_a,
           R"(set_demand(demand: Mapping[str, Set[str]]) -> None

Sets the sensors that outlets want, by subscriber, in place of the last demand. Subscriptions made by
`subscribe` stay. An unknown name is logged and left out.)");
}

}  // namespace QV::python
