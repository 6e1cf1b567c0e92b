#include <cmath>

#include "python/bindings/common.h"
#include "python/bindings/faults.h"
#include "robot/world/chance/range_noise.h"
#include "robot/world/faults/fault_channel.h"
#include "robot/world/units/unit_factory.h"

namespace QV::python {
namespace {

using robot::SensorUnit;
using robot::UnitContext;
using robot::UnitFactory;
using Channel = robot::FaultChannel<double>;

/** A unit whose measuring is written in Python. */
class PythonUnit : public SensorUnit {
 public:
  using SensorUnit::SensorUnit;

  void measure(ko::Clock::time_point now) override {
    callPython([&] {
      const py::function function =
          py::get_override(static_cast<const PythonUnit*>(this), "measure");
      if (!function) throw std::runtime_error("a method measure expected, none is there");
      function(now);
    });
  }
};

/** The robot's part of one: both of Python's halves live as long. */
class UnitKeeper : public SensorUnit {
 public:
  explicit UnitKeeper(std::shared_ptr<PythonUnit> kept)
      : SensorUnit(kept->getName(), kept->getPeriod()), unit(std::move(kept)) {}

  void measure(ko::Clock::time_point now) override { unit->measure(now); }

 private:
  const std::shared_ptr<PythonUnit> unit;
};

std::unique_ptr<SensorUnit> create(PyObject* creator, const Model::SensorConfig& config,
                                   const UnitContext& context) {
  return callPython([&]() -> std::unique_ptr<SensorUnit> {
    static const py::handle type = typeNamed("UnitOrder");
    const py::object made = py::handle(creator)(
        type(config.name, config.properties, config.memoryKeys, UnitContext(context)));
    if (made.is_none()) return nullptr;
    if (!py::isinstance<PythonUnit>(made))
      throw py::type_error("a SensorUnit or None expected, " + describe(made) + " given");
    return std::make_unique<UnitKeeper>(shareWithPython<std::shared_ptr, PythonUnit>(made));
  });
}

double castRay(const UnitContext& context, const std::string& sensor, float reach) {
  if (!std::isfinite(reach) || reach < 0.0f)
    throw py::value_error("a reach of 0 m or more expected, " + std::to_string(reach) + " given");
  return unlocked([&] {
    const robot::Surroundings& around = context.getSurroundings();
    const robot::Moment moment = around.getMoment();
    return around.castRay(robot::Ray::ahead(around.frameInMap(sensor, moment)), reach, moment);
  });
}

Channel::Distortion distortion(const py::function& function) {
  return [kept = keep(function)](double value) {
    return py::handle(kept.get())(value).cast<double>();
  };
}

std::optional<double> pass(Channel& channel, double value, ko::Clock::time_point now) {
  const auto sample = channel.pass(value, now);
  if (!sample) return {};
  return sample->value;
}

void bindContext(py::module_& module) {
  py::class_<UnitContext>(module, "UnitContext", R"(
What units of a virtual robot measure, and where they write. Safe from any thread.)")
      .def("cast_ray", &castRay, "sensor"_a, "reach"_a,
           R"(cast_ray(sensor: str, reach: float) -> float

How far it is, in metres, to what lies ahead along the x axis of a sensor, joint or link: infinity
for nothing up to `reach`. An unknown name: ValueError.)")
      .def(
          "read",
          [](const UnitContext& context, const std::string& key) {
            return unlocked([&] { return context.read(key); });
          },
          "key"_a, "read(key: str) -> Value\n\nOf the robot's memory; no such key: QVError.")
      .def(
          "write",
          [](const UnitContext& context, const std::string& key, const QVValue& value) {
            unlocked([&] { context.write(key, value); });
          },
          "key"_a, "value"_a,
          "write(key: str, value: Value) -> None\n\nA type that the key can't take: QVError.")
      .def(
          "withdraw",
          [](const UnitContext& context, const std::string& key) {
            unlocked([&] { context.withdraw(key); });
          },
          "key"_a, "withdraw(key: str) -> None\n\nLeaves no number in a key.");
}

void bindHelpers(py::module_& module) {
  py::class_<Channel>(module, "FaultChannel", R"(
What a sensor that may be made to fail gives out for what it measures.)")
      .def(
          py::init([](const UnitContext& context, const std::string& sensor,
                      const py::function& garble, const py::function& falsify) {
            return std::make_unique<Channel>(context.getFaults(sensor), distortion(garble),
                                             distortion(falsify));
          }),
          "context"_a, "sensor"_a, "garble"_a, "falsify"_a,
          R"(__init__(context: UnitContext, sensor: str, garble: Callable[[float], float], falsify: Callable[[float], float]) -> None

`garble` makes nonsense of a measurement, `falsify` something believable that is not so.)")
      .def("pass_on", &pass, "value"_a, "now"_a,
           R"(pass_on(value: float, now: int) -> float | None

Its newest sample, which may be the one before; None while it is gone.)");
  py::class_<robot::RangeNoise>(module, "RangeNoise", R"(
What a real sensor makes of true ranges, as the world's options say.)")
      .def(py::init([](const UnitContext& context, const std::string& sensor) {
             return std::make_unique<robot::RangeNoise>(context.getOptions(), sensor);
           }),
           "context"_a, "sensor"_a, "__init__(context: UnitContext, sensor: str) -> None")
      .def("apply", &robot::RangeNoise::apply, "range"_a,
           "apply(range: float) -> float\n\nMetres; infinity when it is lost.");
}

}  // namespace

void bindUnits(py::module_& module) {
  py::class_<PythonUnit, std::shared_ptr<PythonUnit>>(module, "SensorUnit", R"(
What measures for a sensor of a virtual robot: derive from it and define `measure(now: int) -> None`,
which is called once a period, after the body has moved, on any thread. What it raises is logged.)")
      .def(py::init<const std::string&, ko::Duration>(), "name"_a, "period"_a,
           "__init__(name: str, period: int) -> None\n\nNanoseconds; 0 for each of its steps.")
      .def_property_readonly("name", &SensorUnit::getName, "str: For the log.")
      .def_property_readonly("period", &SensorUnit::getPeriod, "int: Nanoseconds.");
  bindContext(module);
  bindHelpers(module);
  py::class_<UnitFactory>(module, "UnitFactory", R"(
Makes what measures for the sensors of a virtual robot, by their types.)")
      .def(py::init([] { return UnitFactory::standard(); }),
           "__init__() -> None\n\nKnows the library's own.")
      .def(
          "add",
          [](UnitFactory& factory, int type, const py::function& creator) {
            factory.add(type, [kept = keep(creator)](const auto& config, const auto& context) {
              return create(kept.get(), config, context);
            });
          },
          "type"_a, "creator"_a,
          R"(add(type: int, creator: Callable[[UnitOrder], SensorUnit | None]) -> None

What makes a unit for each sensor of a type, None for one that nothing measures for. A type that is
known: ValueError.)");
}

}  // namespace QV::python
