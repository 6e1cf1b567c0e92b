#include "python/bindings/common.h"
#include "python/bindings/sensors.h"
#include "sensor/real/sensor_factory.h"

namespace QV::python {
namespace {

using sensor::SensorFactory;
using sensor::SensorOrder;

Model::PointMeaning meaningFrom(const std::string& name) {
  using Model::PointMeaning;
  static const std::map<std::string, PointMeaning> meanings = {
      {"arc", PointMeaning::arc},     {"scan", PointMeaning::scan},
      {"zone", PointMeaning::zone},   {"sighting", PointMeaning::sighting},
      {"floor", PointMeaning::floor}, {"touch", PointMeaning::touch}};
  const auto found = meanings.find(name);
  if (found != meanings.end()) return found->second;
  throw py::value_error("\"arc\", \"scan\", \"zone\", \"sighting\" or \"touch\" expected, \"" +
                        name + "\" given");
}

/** A description's sensor, copied: the creator may keep it. */
py::object describeOrder(const SensorOrder& order) {
  static const py::handle type = typeNamed("SensorOrder");
  return type(order.config.name, order.kind.family, order.fieldOfView, order.config.properties,
              order.config.memoryKeys, order.broker);
}

SensorFactory::Sensors create(PyObject* creator, const SensorOrder& order) {
  return callPython([&]() -> SensorFactory::Sensors {
    const py::object made = py::reinterpret_borrow<py::object>(creator)(describeOrder(order));
    if (made.is_none()) return {};
    if (!py::isinstance<PythonSensor>(made))
      throw py::type_error("a Sensor or None expected, " + describe(made) + " given");
    return {shareWithPython<boost::shared_ptr, PythonSensor>(made)};
  });
}

void add(SensorFactory& factory, int type, const std::string& name, const std::string& family,
         const std::string& points, const py::function& creator) {
  Model::SensorKind kind = {type, name, family, meaningFrom(points)};
  kind.keys.most = 100'000;
  factory.add(
      kind, [kept = keep(creator)](const SensorOrder& order) { return create(kept.get(), order); });
}

}  // namespace

void bindFactories(py::module_& module) {
  py::class_<SensorFactory>(module, "SensorFactory", R"(
Creates the sensors of a robot's description, by their types.)")
      .def(py::init([] { return SensorFactory::standard(); }),
           "__init__() -> None\n\nCreates a factory with the library's own types.")
      .def(
          "add", &add, "type"_a, "name"_a, "family"_a, "points"_a, "creator"_a,
          R"(add(type: int, name: str, family: str, points: PointMeaning, creator: Callable[[SensorOrder], Sensor | None]) -> None

Adds a type: its number and name in descriptions, its family, the meaning of its points ("arc", "scan",
"zone", "sighting" or "touch"), and its creator. The creator returns a sensor, or None to leave it out.
Raises ValueError for a number or name in use.)");
}

}  // namespace QV::python
