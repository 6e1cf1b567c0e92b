#include <atomic>

#include "python/bindings/manager_handle.h"
#include "python/bindings/session_handle.h"
#include "python/bindings/snapshots.h"
#include "session/sensor_check.h"

namespace QV::python {
namespace {

using session::Session;

std::shared_ptr<ManagerHandle> managerOf(const std::shared_ptr<SessionHandle>& handle) {
  return std::make_shared<ManagerHandle>([weak = std::weak_ptr(handle)] {
    const auto living = weak.lock();
    if (!living)
      throw std::runtime_error("a session that lives expected, one that has ended given");
    const auto& session = living->get();
    return std::shared_ptr<sensor::SensorManager>(session, &session->getManager());
  });
}

/** A watch over a check, which goes on until Ctrl-C ends it, wherever it runs. */
struct CheckWatch {
  std::atomic<bool> wasLeft{false};
  bool wasInterrupted = false;

  bool goesOn() {
    if (wasLeft) return false;
    const Locked locked;
    wasInterrupted = PyErr_CheckSignals() != 0;
    return !wasInterrupted;
  }
};

std::vector<session::CheckedSensor> watchSensors(SessionHandle& handle, const Names& names) {
  const auto watch = std::make_shared<CheckWatch>();
  session::CheckOptions options;
  if (names.names) options.sensors = *names.names;
  options.goesOn = [watch](double) { return watch->goesOn(); };
  try {
    auto checked = handle.useAside(
        [options](Session& session) { return session::checkSensors(session, options); });
    if (watch->wasInterrupted) throw py::error_already_set();
    return checked;
  } catch (py::error_already_set&) {
    watch->wasLeft = true;
    throw;
  }
}

py::list checkSession(SessionHandle& handle, const Names& names) {
  static const py::handle type = typeNamed("Check");
  const auto checked = watchSensors(handle, names);
  py::list list;
  for (const auto& each : checked)
    list.append(type(each.name, each.family, session::getName(each.verdict), each.why, each.records,
                     each.points));
  return list;
}

SnapshotView lookAt(SessionHandle& handle) {
  return {handle.use(
      [](Session& session) { return std::make_shared<const session::Snapshot>(session.look()); })};
}

boost::shared_ptr<OccupancyMap> mapOf(const SessionHandle& handle) {
  return boost::const_pointer_cast<OccupancyMap>(
      handle.ask([](Session& session) { return session.getMap(); }));
}

py::object htmlOf(const py::object& session) {
  return py::module_::import("qv_sensor._plot").attr("html_of")(session);
}

/** A property that a session tells from any thread. */
template <auto get>
auto toldAnywhere() {
  return [](const SessionHandle& self) {
    return self.ask([](Session& session) { return (session.*get)(); });
  };
}

void bindDescription(SessionClass& type) {
  type.def_property_readonly("is_open", &SessionHandle::isOpen, "bool: True until it is closed.")
      .def_property_readonly("title", toldAnywhere<&Session::getTitle>(),
                             "str: The title for people: 'Virtual robot porter'.")
      .def_property_readonly("map", &mapOf, "OccupancyMap | None: The map; None if it has none.")
      .def_property_readonly("manager", &managerOf,
                             "SensorManager: Its sensors; it ends with the session.")
      .def_property_readonly("broker", toldAnywhere<&Session::getBroker>(),
                             "Broker | None: The broker of its modules; None if it has none.")
      .def_property_readonly("radius", toldAnywhere<&Session::getRadius>(),
                             "float: The robot's radius, metres.");
}

}  // namespace

void bindSessions(py::module_& module) {
  SessionClass type(module, "Session", R"(
Controls one robot: simulated, virtual, recorded or from a ROS 2 graph. open_virtual, open_simulated,
open_recording and open_heard_robot open one. A `with` block closes it; later calls raise RuntimeError.
Poses and positions are in the map, metres and radians. `subscribe`, `unsubscribe`, `enable` and
`diagnose` may be called on any thread, the other methods only on the thread that opened it.)");
  type.def("close", &SessionHandle::close,
           "close() -> None\n\nStops the robot and all sensors, and ends the session.")
      .def("look", &lookAt, "look() -> Snapshot\n\nTakes a snapshot. Never waits for hardware.")
      .def("check", &checkSession, "sensors"_a = py::none(),
           R"(check(sensors: Names = None) -> list[Check]

Checks each sensor in turn, by default all: watches it for two and a half seconds, and as long again
after the robot has turned on the spot. Returns a result for each. Raises ValueError for an unknown
name.)")
      .def("subscription", &subscription, "subscriber"_a, "names"_a = py::none(), kSubscription)
      .def("_repr_html_", &htmlOf,
           "_repr_html_() -> str\n\nReturns the session's picture as HTML, for notebooks.");
  bindBlock(type);
  bindDescription(type);
  bindSessionSwitches(type);
  bindSessionDriving(type);
  bindSessionFaults(type);
  bindSessionTime(type);
  bindOpening(module);
}

}  // namespace QV::python
