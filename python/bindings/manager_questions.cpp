#include "python/bindings/common.h"
#include "python/bindings/manager_handle.h"

namespace QV::python {
namespace {

using sensor::SensorManager;

/** An operation of a manager that answers a question about some names. */
template <typename Result, typename... Named>
auto asking(Result (SensorManager::*question)(const Named&...) const) {
  return [question](const ManagerHandle& handle, const Named&... named) {
    return handle.ask([&](auto& manager) { return (manager.*question)(named...); });
  };
}

/** The same for one that waits for a sensor that is being switched. */
template <typename Result, typename... Named>
auto awaiting(Result (SensorManager::*question)(const Named&...) const) {
  return [question](const ManagerHandle& handle, const Named&... named) {
    return handle.await([=](auto& manager) { return (manager.*question)(named...); });
  };
}

void bindLists(ManagerClass& type) {
  type.def("get_all_sensors_by_family", asking(&SensorManager::getAllSensorsByFamily),
           "get_all_sensors_by_family() -> dict[str, set[str]]")
      .def("get_family_names", asking(&SensorManager::getFamilyNames),
           "get_family_names() -> set[str]")
      .def("get_sensors_by_family", asking(&SensorManager::getSensorsByFamily), "family"_a,
           R"(get_sensors_by_family(family: str) -> set[str]

Returns the sensors of a family. An unknown family has none, which is logged.)")
      .def("get_sensor_list", asking(&SensorManager::getSensorList),
           "get_sensor_list() -> set[str]")
      .def("get_enabled_sensor_list", asking(&SensorManager::getEnabledSensorList),
           R"(get_enabled_sensor_list() -> set[str]

Returns the sensors that are enabled and of good diagnosis, started or not.)")
      .def("get_subscribers", awaiting(&SensorManager::getSubscribers),
           "get_subscribers() -> set[str]\n\nReturns the names. Waits while a sensor starts or "
           "stops.")
      .def("get_sensor_list_by_subscriber", awaiting(&SensorManager::getSensorListBySubscriber),
           "subscriber"_a,
           R"(get_sensor_list_by_subscriber(subscriber: str) -> set[str]

Returns the sensors of a subscriber. Waits while a sensor starts or stops.)");
}

void bindStates(ManagerClass& type) {
  type.def("is_sensor", asking(&SensorManager::isSensor), "name"_a, "is_sensor(name: str) -> bool")
      .def("is_family", asking(&SensorManager::isFamily), "name"_a, "is_family(name: str) -> bool")
      .def("is_sensor_started", asking(&SensorManager::isSensorStarted), "sensor"_a,
           "is_sensor_started(sensor: str) -> bool\n\nReturns False for an unknown sensor.")
      .def("is_sensor_enabled", asking(&SensorManager::isSensorEnabled), "sensor"_a,
           "is_sensor_enabled(sensor: str) -> bool\n\nReturns False for an unknown sensor.")
      .def("is_sensor_diagnosis_success", asking(&SensorManager::isSensorDiagnosisSuccess),
           "sensor"_a,
           "is_sensor_diagnosis_success(sensor: str) -> bool\n\n"
           "Returns False for an unknown sensor.")
      .def("is_sensor_subscribed_by", awaiting(&SensorManager::isSensorSubscribedBy), "sensor"_a,
           "subscriber"_a,
           R"(is_sensor_subscribed_by(sensor: str, subscriber: str) -> bool

Returns False for an unknown sensor. Waits while a sensor starts or stops.)");
}

}  // namespace

void bindManagerQuestions(ManagerClass& type) {
  bindLists(type);
  bindStates(type);
}

}  // namespace QV::python
