#include <boost/make_shared.hpp>

#include "platform/navigation/occupancy_map.h"
#include "python/bindings/common.h"
#include "python/bindings/health.h"
#include "python/bindings/manager_handle.h"
#include "python/bindings/records.h"
#include "python/bindings/sensors.h"
#include "sensor/core/scoped_subscription.h"
#include "sensor/real/real_sensor_manager.h"
#include "sensor/simulation/simulated_sensor_manager.h"

namespace QV::python {
namespace {

/** Sensors of one's own, read whenever somebody asks. */
class SensorListManager : public sensor::SensorManager {
 public:
  explicit SensorListManager(const py::iterable& list) {
    for (const py::handle item : list) {
      if (!py::isinstance<PythonSensor>(item))
        throw py::type_error("Sensors expected, " + describe(item) + " given");
      xAdd(shareWithPython<boost::shared_ptr, PythonSensor>(
          py::reinterpret_borrow<py::object>(item)));
    }
  }
  void setSensorsDebug(bool) override {}

 protected:
  std::vector<Math::MetricalData> xGetData() const override { return *xShareData(); }
  SharedRecords xShareData() const override {
    xUpdateData();
    return xShareCache();
  }
  void xOnSensorOnChanged(bool) override {}

 private:
  void xAdd(const boost::shared_ptr<sensor::Sensor>& sensor) {
    if (!sensors.emplace(sensor->getName(), sensor).second)
      throw py::value_error("a name for each sensor expected, two called " + sensor->getName() +
                            " given");
    families[sensor->getFamilyName()].insert(sensor->getName());
  }
};

/** A simulated robot's sensors and their map. */
class MapKeeper : public sensor::SimulatedSensorManager {
 public:
  MapKeeper(int kind, boost::shared_ptr<OccupancyMap> kept)
      : SimulatedSensorManager(kind, kept.get()), map(std::move(kept)) {}

 private:
  const boost::shared_ptr<OccupancyMap> map;
};

py::list read(const ManagerHandle& handle, const Names& names) {
  return toPython(handle.ask([](auto& manager) { return manager.shareMetricalData(); }), names);
}

bool subscribe(const ManagerHandle& handle, const std::string& subscriber, const Names& names) {
  return handle.ask([&](auto& manager) {
    return names.names ? manager.subscribe(subscriber, *names.names)
                       : manager.subscribe(subscriber);
  });
}

bool unsubscribe(const ManagerHandle& handle, const std::string& subscriber, const Names& names) {
  return handle.ask([&](auto& manager) {
    return names.names ? manager.unsubscribe(subscriber, *names.names)
                       : manager.unsubscribe(subscriber);
  });
}

py::object lastTrouble(const ManagerHandle& handle, const std::string& sensor) {
  const auto trouble = handle.ask([&](auto& manager) { return manager.getLastTrouble(sensor); });
  return trouble ? toPython(*trouble) : py::none();
}

std::map<std::string, std::string> awaitRecords(const ManagerHandle& handle, ko::Duration limit,
                                                const Names& names) {
  constexpr int kPollMs = 10;
  const auto end = endOf(limit);
  for (;;) {
    auto missing = handle.ask([&](auto& manager) {
      return findMissingRecords(manager, names.names.value_or(manager.getFamilyNames()));
    });
    if (missing.empty() || ko::Clock::now() >= end) return missing;
    unlocked([] { ko::os::msleep(kPollMs); });
    checkInterrupt();
  }
}

using Manager = py::class_<ManagerHandle, std::shared_ptr<ManagerHandle>>;

void bindReading(Manager& type) {
  type.def("get_metrical_data", &read, "names"_a = py::none(),
           R"(get_metrical_data(names: Names = None) -> list[Record]

The records of all started sensors, in the order of their names; or for each name, in order, those
of that sensor or family. Nothing is copied.)")
      .def("await_records", &awaitRecords, "limit"_a, "names"_a = py::none(),
           R"(await_records(limit: int, names: Names = None) -> dict[str, str]

Waits until each sensor, by default all, has a fresh record or a reason for none, but not longer than
`limit`, nanoseconds of clock(). What is missing by then, and why, by sensor. In a SimulatedTime that
moves on the thread that made it; on another one it waits for that.)")
      .def("get_last_trouble", &lastTrouble, "sensor"_a,
           R"(get_last_trouble(sensor: str) -> LogRecord | None

Why a sensor fails: its last warning or error; also of one that could not be built.)")
      .def(
          "get_all_sensors_by_family",
          [](const ManagerHandle& handle) {
            return handle.ask([](auto& manager) { return manager.getAllSensorsByFamily(); });
          },
          "get_all_sensors_by_family() -> dict[str, set[str]]")
      .def(
          "get_sensor_list",
          [](const ManagerHandle& handle) {
            return handle.ask([](auto& manager) { return manager.getSensorList(); });
          },
          "get_sensor_list() -> set[str]")
      .def(
          "get_subscribers",
          [](const ManagerHandle& handle) {
            return handle.ask([](auto& manager) { return manager.getSubscribers(); });
          },
          "get_subscribers() -> set[str]");
}

void bindSwitches(Manager& type) {
  type.def("subscribe", &subscribe, "subscriber"_a, "names"_a = py::none(),
           R"(subscribe(subscriber: str, names: Names = None) -> bool

Wants sensors or families, by default all, on behalf of `subscriber`; starting their hardware takes
its time. True if that was new to a sensor; a name that there is not is logged. `subscription` does
the same for a `with` block.)")
      .def("unsubscribe", &unsubscribe, "subscriber"_a, "names"_a = py::none(),
           R"(unsubscribe(subscriber: str, names: Names = None) -> bool

The mirror of subscribe.)")
      .def(
          "enable_sensor_or_family",
          [](const ManagerHandle& handle, const std::string& name, bool enable) {
            return handle.ask(
                [&](auto& manager) { return manager.enableSensorOrFamily(name, enable); });
          },
          "name"_a, "enable"_a,
          R"(enable_sensor_or_family(name: str, enable: bool) -> bool

A disabled sensor stops and keeps its subscribers. False for a name that there is not.)")
      .def(
          "set_sensor_diagnosis",
          [](const ManagerHandle& handle, const std::string& sensor, bool success) {
            return handle.ask(
                [&](auto& manager) { return manager.setSensorDiagnosis(sensor, success); });
          },
          "sensor"_a, "success"_a,
          R"(set_sensor_diagnosis(sensor: str, success: bool) -> bool

A false diagnosis stops the sensor, a true one lets it try again. False for a name that there is
not.)")
      .def(
          "look_again",
          [](const ManagerHandle& handle) {
            handle.ask([](auto& manager) { manager.lookAgain(); });
          },
          R"(look_again() -> None

Looks whether any sensor runs, after enabling or a diagnosis.)");
}

void bindQuestions(Manager& type) {
  const auto ask1 = [&](const char* name,
                        bool (sensor::SensorManager::*question)(const std::string&) const,
                        const char* doc) {
    type.def(
        name,
        [question](const ManagerHandle& handle, const std::string& sensor) {
          return handle.ask([&](auto& manager) { return (manager.*question)(sensor); });
        },
        "sensor"_a, doc);
  };
  using sensor::SensorManager;
  ask1("is_sensor_started", &SensorManager::isSensorStarted,
       "is_sensor_started(sensor: str) -> bool\n\nFalse for an unknown sensor.");
  ask1("is_sensor_enabled", &SensorManager::isSensorEnabled,
       "is_sensor_enabled(sensor: str) -> bool\n\nFalse for an unknown sensor.");
  ask1("is_sensor_diagnosis_success", &SensorManager::isSensorDiagnosisSuccess,
       "is_sensor_diagnosis_success(sensor: str) -> bool\n\nFalse for an unknown sensor.");
}

void bindSimulated(py::module_& module) {
  using Handle = SimulatedManagerHandle;
  py::class_<Handle, ManagerHandle, std::shared_ptr<Handle>>(module, "SimulatedSensorManager", R"(
The sensors of a robot of some kind, which cast rays into a map; every read measures anew.)")
      .def(py::init([](int kind, boost::shared_ptr<OccupancyMap> map) {
             return std::make_shared<Handle>(std::make_shared<MapKeeper>(kind, std::move(map)));
           }),
           "kind"_a, "map"_a,
           R"(__init__(kind: int, map: OccupancyMap | None) -> None

Kinds -1 (a perfect laser), 0 (two sonars) and 1 (bumpers, sonars, depth camera); any other has no
sensors, which is logged. Without a map records have no points.)")
      .def(
          "set_pose_2d",
          [](const Handle& handle, const Math::Pose2D& scan, std::optional<Math::Pose2D> robot) {
            handle.ask([&](auto& manager) { manager.setPose2D(scan, robot.value_or(scan)); });
          },
          "scan_pose"_a, "reference_pose"_a = py::none(),
          R"(set_pose_2d(scan_pose: PoseLike, reference_pose: PoseLike | None = None) -> None

Where rays are cast from, in the map, and where records say that the robot is; by default the same.)");
}

void bindReal(py::module_& module) {
  using Handle = RealManagerHandle;
  py::class_<Handle, ManagerHandle, std::shared_ptr<Handle>>(module, "RealSensorManager", R"(
The sensors of the robot behind a broker, virtual or not, as its description lists them.

While any sensor runs, records are gathered every 100 ms, in a SimulatedTime as that goes by.)")
      .def(py::init(
               [](const boost::shared_ptr<QVBroker>& broker, const sensor::SensorFactory* factory) {
                 const auto& makes = factory ? *factory : sensor::SensorFactory::standard();
                 return std::make_shared<Handle>(unlocked(
                     [&] { return std::make_shared<sensor::RealSensorManager>(broker, makes); }));
               }),
           "broker"_a, "factory"_a = py::none(),
           R"(__init__(broker: Broker, factory: SensorFactory | None = None) -> None

With the sensors that `factory` knows. What can't be built is logged and left out.)");
}

}  // namespace

py::object subscription(const py::object& target, const std::string& subscriber,
                        const py::object& names) {
  return py::module_::import("qv_sensor._subscription")
      .attr("Subscription")(target, subscriber, names);
}

py::object toPython(const ko::log::Record& line) {
  static const py::handle type = typeNamed("LogRecord");
  return type(ko::log::getName(line.level), line.category, line.method, line.message,
              line.timestamp);
}

void bindManagers(py::module_& module) {
  Manager type(module, "SensorManager", R"(
A robot's sensors, by name and by family: a `with` block ends it. Safe from any thread; once ended,
RuntimeError.)");
  type.def(py::init([](const py::iterable& sensors) {
             return std::make_shared<ManagerHandle>(std::make_shared<SensorListManager>(sensors));
           }),
           "sensors"_a,
           R"(__init__(sensors: Iterable[Sensor]) -> None

Of sensors of one's own, which are read whenever somebody asks for records. Two of one name:
ValueError.)")
      .def("close", &ManagerHandle::end,
           "close() -> None\n\nEnds it. That of a session ends with the session.");
  type.def_property_readonly("is_open", &ManagerHandle::isOpen, "bool: Whether it has not ended.")
      .def("subscription", &subscription, "subscriber"_a, "names"_a = py::none(), kSubscription);
  bindBlock(type);
  bindReading(type);
  bindHealth(type);
  bindSwitches(type);
  bindQuestions(type);
  bindSimulated(module);
  bindReal(module);
}

}  // namespace QV::python
